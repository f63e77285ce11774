#include "IpodControl/terminal/Connector.h"

#include <future>
#include <system_error>
#include <thread>
#include <utility>

#include "ServiceUtil/WakeUp.h"

namespace IpodControl::PlayerView {

struct Connector::Attempt {
    explicit Attempt(WakeUp wakeUp) : isOver(std::move(wakeUp)) {}

    const WakeUp isOver;
    std::promise<Outcome<Wire>> result;  // set by the attempt's thread
};

namespace {

Outcome<Wire> Connect(const Endpoint& endpoint, std::chrono::milliseconds timeout) {
    Wire wire;
    const auto opened = wire.Open(endpoint, In(timeout));
    return opened ? Outcome<Wire>(std::move(wire)) : Outcome<Wire>(opened.Why());
}

}  // namespace

Connector::Connector() = default;
Connector::~Connector() = default;

Outcome<Done> Connector::Start(const Endpoint& endpoint, std::chrono::milliseconds timeout) {
    WakeUp isOver;
    if (!isOver.IsOpen()) {
        return Problem{ProblemKind::NoConnection, "There is no descriptor left to connect with"};
    }
    auto attempt = std::make_shared<Attempt>(std::move(isOver));
    try {
        std::thread([attempt, endpoint, timeout] {
            attempt->result.set_value(Connect(endpoint, timeout));
            attempt->isOver.Raise();
        }).detach();
    } catch (const std::system_error& failure) {
        return Problem{ProblemKind::NoConnection, std::string("Connecting has failed: ") + failure.what()};
    }
    m_attempt = std::move(attempt);
    return Done{};
}

int Connector::Descriptor() const {
    return m_attempt ? m_attempt->isOver.Fd() : -1;
}

Outcome<Wire> Connector::Take() {
    return std::exchange(m_attempt, nullptr)->result.get_future().get();
}

}  // namespace IpodControl::PlayerView
