#include "DeviceSimulator/SoundProgram.h"

#include <dlfcn.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

namespace DeviceSimulator {

namespace {

class SpawnAttributes {
  public:
    /// No signal is blocked, ignored or caught, and none of the terminal's comes: the program ends with the
    /// socket.
    SpawnAttributes() {
        sigset_t signals;
        posix_spawnattr_init(&m_attributes);
        posix_spawnattr_setflags(&m_attributes,
                                 POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&m_attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&m_attributes, &signals);
    }
    ~SpawnAttributes() { posix_spawnattr_destroy(&m_attributes); }
    SpawnAttributes(const SpawnAttributes&) = delete;
    SpawnAttributes& operator=(const SpawnAttributes&) = delete;
    const posix_spawnattr_t* Get() const { return &m_attributes; }

  private:
    posix_spawnattr_t m_attributes{};
};

class SpawnFiles {
  public:
    /// The socket is standard input, what is printed goes to standard error, and nothing else is passed on.
    explicit SpawnFiles(int socket) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawn_file_actions_adddup2(&m_actions, socket, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&m_actions, STDERR_FILENO, STDOUT_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1);
    }
    ~SpawnFiles() { posix_spawn_file_actions_destroy(&m_actions); }
    SpawnFiles(const SpawnFiles&) = delete;
    SpawnFiles& operator=(const SpawnFiles&) = delete;
    const posix_spawn_file_actions_t* Get() const { return &m_actions; }

  private:
    posix_spawn_file_actions_t m_actions{};
};

}  // namespace

std::string SoundProgram::Path() {
    Dl_info library{};
    static const char kHere = 0;
    const bool isFound = dladdr(&kHere, &library) != 0 && library.dli_fname != nullptr;
    return (std::filesystem::path(isFound ? library.dli_fname : "").parent_path() / "simulated-player-sound")
        .native();
}

int SoundProgram::Start(const std::string& folder) {
    int ends[2] = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) {
        return errno;
    }
    UniqueFd ours(ends[0]);
    const UniqueFd theirs(ends[1]);
    std::string path = Path();
    std::string folderArgument = folder;
    char* const arguments[] = {path.data(), folderArgument.data(), nullptr};
    const SpawnFiles files(theirs.Get());
    const SpawnAttributes attributes;
    const int error = posix_spawn(&m_pid, path.c_str(), files.Get(), attributes.Get(), arguments, environ);
    if (error == 0) {
        m_socket = std::move(ours);
    }
    return error;
}

int SoundProgram::End() {
    int status = 0;
    if (m_socket) {
        m_socket = UniqueFd{};
        // It has gone, or is to: what hangs it up does not hold this thread.
        kill(m_pid, SIGKILL);
        while (waitpid(m_pid, &status, 0) < 0 && errno == EINTR) {
        }
    }
    return status;
}

}  // namespace DeviceSimulator
