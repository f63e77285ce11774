// The running media program, simulated-player-media: whatever reads foreign files is in there.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// One thread.
class MediaProgram {
  public:
    MediaProgram() = default;
    ~MediaProgram() { End(); }
    MediaProgram(const MediaProgram&) = delete;
    MediaProgram& operator=(const MediaProgram&) = delete;

    /// Runs the program with `words` as its arguments and the other end of a socket of `type` as its standard
    /// input. 0, or the errno that it failed with.
    int Start(int type, std::vector<std::string> words);
    bool IsRunning() const { return m_socket.IsOpen(); }
    /// -1 while it does not run. Non-blocking; messages as in MediaProtocol.h.
    int Socket() const { return m_socket.Get(); }
    /// Makes sure that it has ended, and says how: its status as waitpid has it; 0 where it did not run.
    int End();

    /// Where it is looked for: beside the program that this code is part of.
    static std::string Path();
    /// "signal 11", "status 1": of what End returns.
    static std::string DescribeEnd(int status);

  private:
    Descriptor m_socket;
    pid_t m_pid = -1;
};

}  // namespace DeviceSimulator
