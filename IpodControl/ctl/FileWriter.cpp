#include "IpodControl/ctl/FileWriter.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace IpodControl {

namespace {

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(descriptor, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

mode_t UsualMode() {
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

/// The errno of what failed; 0: done.
int WriteInPlace(const std::string& path, std::string_view bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        return errno;
    }
    const int failure = WriteAll(file, bytes) ? 0 : errno;
    close(file);
    return failure;
}

int WriteBeside(const std::string& path, std::string_view bytes) {
    std::string beside = path + ".XXXXXX";
    const int file = mkostemp(beside.data(), O_CLOEXEC);
    if (file < 0) {
        return errno;
    }
    const bool isWritten = WriteAll(file, bytes) && fchmod(file, UsualMode()) == 0;
    int failure = isWritten ? 0 : errno;
    if (close(file) != 0 && failure == 0) {
        failure = errno;
    }
    if (failure == 0 && rename(beside.c_str(), path.c_str()) != 0) {
        failure = errno;
    }
    if (failure != 0) {
        unlink(beside.c_str());
    }
    return failure;
}

}  // namespace

std::optional<std::string> WriteFile(const std::string& path, std::string_view bytes) {
    struct stat present {};
    int failure = 0;
    if (path == "-") {
        failure = WriteAll(STDOUT_FILENO, bytes) ? 0 : errno;
    } else if (stat(path.c_str(), &present) == 0 && !S_ISREG(present.st_mode)) {
        failure = WriteInPlace(path, bytes);
    } else {
        failure = WriteBeside(path, bytes);
    }
    if (failure == 0) {
        return std::nullopt;
    }
    return "cannot write " + path + ": " + std::strerror(failure) + ".";
}

}  // namespace IpodControl
