#include "DeviceSimulator/media/SoundFifo.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace DeviceSimulator {

namespace {

constexpr mode_t kOwnerOnly = 0600;

/// For reading as well: so that it can be emptied, and written while nobody else has it open.
Descriptor OpenFifo(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
        return Descriptor();  // opening something else may have effects
    }
    Descriptor file(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    return file.IsOpen() && fstat(file.Get(), &status) == 0 && S_ISFIFO(status.st_mode) ? std::move(file)
                                                                                        : Descriptor();
}

}  // namespace

int SoundFifo::Open(const std::string& path) {
    const int error = mkfifo(path.c_str(), kOwnerOnly) == 0 ? 0 : errno;  // EEXIST where there is something
    m_file = OpenFifo(path);
    return m_file.IsOpen() ? 0 : (error != 0 ? error : ENOENT);
}

std::size_t SoundFifo::Unread() const {
    int bytes = 0;
    return m_file.IsOpen() && ioctl(m_file.Get(), FIONREAD, &bytes) == 0
               ? static_cast<std::size_t>(bytes) / sizeof(SoundFrame)
               : 0;
}

std::size_t SoundFifo::Write(std::span<const SoundFrame> frames) {
    const ssize_t written = write(m_file.Get(), frames.data(), frames.size_bytes());
    return written > 0 ? static_cast<std::size_t>(written) / sizeof(SoundFrame) : 0;
}

void SoundFifo::Drop(std::size_t count) {
    std::array<SoundFrame, 4096> dropped;
    while (count > 0) {
        const std::size_t most = std::min(count, dropped.size());
        const ssize_t got = read(m_file.Get(), dropped.data(), most * sizeof(SoundFrame));
        if (got <= 0) {
            return;
        }
        count -= std::min(count, static_cast<std::size_t>(got) / sizeof(SoundFrame));
    }
}

}  // namespace DeviceSimulator
