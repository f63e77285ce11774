// The socket that clients connect to.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/ThreadRole.h"

namespace Json::Rpc {

class Listener {
  public:
    using Clock = std::chrono::steady_clock;

    explicit Listener(std::chrono::milliseconds pause) : m_pauseTime(pause) {}

    /// The address is a numeric IPv4 or IPv6 text; with port 0 the system picks one. False with the reason in
    /// errno; may then be tried again.
    bool Bind(const std::string& address, std::uint16_t port) REQUIRES(kServerThread);
    bool Listen() REQUIRES(kServerThread);

    /// The port in use, 0 when there is none.
    std::uint16_t Port() const REQUIRES(kServerThread);

    /// The next client's socket; not open when there is none now. Not to be called again in this round then.
    Descriptor Accept() REQUIRES(kServerThread);

    /// What to await newcomers of.
    int Fd() const REQUIRES(kServerThread) { return m_socket.Get(); }

    /// When accepting goes on that rests because the system is short of descriptors or memory; in the past
    /// when it does not. Meanwhile the client that waits would make every wait for newcomers return at once.
    Clock::time_point PauseEnd() const REQUIRES(kServerThread) { return m_pauseEnd; }

    void Close() REQUIRES(kServerThread);

  private:
    int RefuseOne() REQUIRES(kServerThread);

    const std::chrono::milliseconds m_pauseTime;
    Descriptor m_socket GUARDED_BY(kServerThread);
    Descriptor m_spare GUARDED_BY(kServerThread);  // let go to accept and refuse a client when descriptors
                                                   // have run out
    Clock::time_point m_pauseEnd GUARDED_BY(kServerThread);
};

}  // namespace Json::Rpc
