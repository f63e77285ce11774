// Connects without making anybody wait: looking up a name takes as long as it takes.
#pragma once

#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include "IpodControl/Wire.h"
#include "ServiceUtil/WakeUp.h"

namespace IpodControl::PlayerView {

/// One thread uses it. An attempt runs on a thread of its own that shares nothing but the attempt, and is
/// left to itself when it is no longer wanted.
class Connector {
  public:
    /// A problem where the process has no descriptor or thread left for it.
    Outcome<Done> Start(const Endpoint& endpoint, std::chrono::milliseconds timeout) {
        WakeUp isOver;
        if (!isOver.IsOpen()) {
            return Problem{ProblemKind::NoConnection, "There is no descriptor left to connect with"};
        }
        auto attempt = std::make_shared<Attempt>(Attempt{std::move(isOver), {}});
        try {
            std::thread([attempt, endpoint, timeout] {
                Wire wire;
                const auto opened = wire.Open(endpoint, In(timeout));
                attempt->result.set_value(opened ? Outcome<Wire>(std::move(wire)) : opened.Why());
                attempt->isOver.Raise();
            }).detach();
        } catch (const std::system_error& failure) {
            return Problem{ProblemKind::NoConnection,
                           std::string("Connecting has failed: ") + failure.what()};
        }
        m_attempt = std::move(attempt);
        return Done{};
    }
    bool IsRunning() const { return m_attempt != nullptr; }
    /// Readable once the attempt is over; -1 while none runs.
    int Descriptor() const { return m_attempt ? m_attempt->isOver.Fd() : -1; }
    /// Once it is over: the connection.
    Outcome<Wire> Take() { return std::exchange(m_attempt, nullptr)->result.get_future().get(); }

  private:
    struct Attempt {
        WakeUp isOver;
        std::promise<Outcome<Wire>> result;  // set by the attempt's thread
    };

    std::shared_ptr<Attempt> m_attempt;
};

}  // namespace IpodControl::PlayerView
