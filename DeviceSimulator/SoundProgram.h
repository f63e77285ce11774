// The running sound program, simulated-player-sound.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>

#include "DeviceSimulator/UniqueFd.h"

namespace DeviceSimulator {

/// One thread.
class SoundProgram {
  public:
    SoundProgram() = default;
    ~SoundProgram() { End(); }
    SoundProgram(const SoundProgram&) = delete;
    SoundProgram& operator=(const SoundProgram&) = delete;

    /// Runs the program that stands beside this library. 0, or the errno that it failed with.
    int Start(const std::string& folder);
    bool IsRunning() const { return static_cast<bool>(m_socket); }
    /// -1 while it does not run. Non-blocking; messages as in SoundProtocol.h.
    int Socket() const { return m_socket.Get(); }
    /// Makes sure that it has ended, and says how: its status as waitpid has it.
    int End();

    /// Where it is looked for.
    static std::string Path();

  private:
    UniqueFd m_socket;
    pid_t m_pid = -1;
};

}  // namespace DeviceSimulator
