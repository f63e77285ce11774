// Connects without making anybody wait: looking up a name takes as long as it takes.
#pragma once

#include <chrono>
#include <memory>

#include "IpodControl/Wire.h"

namespace IpodControl::PlayerView {

/// One thread uses it. An attempt runs on a thread of its own that shares nothing but the attempt, and is
/// left to itself when it is no longer wanted.
class Connector {
  public:
    Connector();
    ~Connector();
    Connector(const Connector&) = delete;
    Connector& operator=(const Connector&) = delete;

    /// A problem where the process has no descriptor or thread left for it.
    Outcome<Done> Start(const Endpoint& endpoint, std::chrono::milliseconds timeout);
    bool IsRunning() const { return m_attempt != nullptr; }
    /// Readable once the attempt is over; -1 while none runs.
    int Descriptor() const;
    /// Once it is over: the connection.
    Outcome<Wire> Take();

  private:
    struct Attempt;
    std::shared_ptr<Attempt> m_attempt;
};

}  // namespace IpodControl::PlayerView
