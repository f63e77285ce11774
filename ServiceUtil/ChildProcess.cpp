#include "ServiceUtil/ChildProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace {

class SpawnSettings {
  public:
    SpawnSettings(int standardInput, ChildPlace place) {
        sigset_t signals;
        posix_spawnattr_init(&attributes);
        const int placeFlag = place == ChildPlace::Session ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
        posix_spawnattr_setflags(
            &attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | placeFlag));
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes, &signals);
        sigfillset(&signals);
        posix_spawnattr_setsigdefault(&attributes, &signals);
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, standardInput, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&files, STDERR_FILENO, STDOUT_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&attributes);
        posix_spawn_file_actions_destroy(&files);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t files{};
};

}  // namespace

int StartChild(std::vector<std::string> words, int standardInput, ChildPlace place, pid_t& child) {
    std::vector<char*> arguments;
    std::transform(words.begin(), words.end(), std::back_inserter(arguments),
                   [](std::string& word) { return word.data(); });
    arguments.push_back(nullptr);
    const SpawnSettings settings(standardInput, place);
    return posix_spawnp(&child, arguments.front(), &settings.files, &settings.attributes, arguments.data(),
                        environ);
}

int WaitForChild(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

int EndChild(pid_t child) {
    kill(child, SIGKILL);
    return WaitForChild(child);
}
