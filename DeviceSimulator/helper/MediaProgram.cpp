#include "DeviceSimulator/helper/MediaProgram.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "ServiceUtil/ChildProcess.h"

namespace DeviceSimulator {

std::string MediaProgram::Path() {
    std::error_code ignored;
    const auto file = std::filesystem::read_symlink("/proc/self/exe", ignored);
    return (file.parent_path() / "simulated-player-media").native();
}

std::string MediaProgram::DescribeEnd(int status) {
    return WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                               : "status " + std::to_string(WEXITSTATUS(status));
}

int MediaProgram::Start(int type, std::vector<std::string> words) {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, type | SOCK_CLOEXEC, 0, ends) != 0) {
        return errno;
    }
    Descriptor ours(ends[0]);
    const Descriptor theirs(ends[1]);
    fcntl(ours.Get(), F_SETFL, O_NONBLOCK);
    words.insert(words.begin(), Path());
    const int error = StartChild(std::move(words), theirs.Get(), ChildPlace::ProcessGroup, m_pid);
    if (error == 0) {
        m_socket = std::move(ours);
    }
    return error;
}

int MediaProgram::End() {
    if (!m_socket.IsOpen()) {
        return 0;
    }
    m_socket.Close();
    // It has gone, or is to: what hangs it up does not hold this thread.
    return EndChild(m_pid);
}

}  // namespace DeviceSimulator
