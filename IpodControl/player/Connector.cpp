#include "IpodControl/player/Connector.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>
#include <future>
#include <thread>
#include <utility>

namespace IpodControl::PlayerView {

struct Connector::Attempt {
    Attempt() = default;
    ~Attempt() { close(event); }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    std::promise<Outcome<std::unique_ptr<Wire>>> result;  // set by the attempt's thread
};

namespace {

Outcome<std::unique_ptr<Wire>> Connect(const Endpoint& endpoint, std::chrono::milliseconds timeout) {
    auto wire = std::make_unique<Wire>();
    if (const auto opened = wire->Open(endpoint, In(timeout)); !opened) {
        return opened.Why();
    }
    return wire;
}

}  // namespace

Connector::Connector() = default;
Connector::~Connector() = default;

void Connector::Start(const Endpoint& endpoint, std::chrono::milliseconds timeout) {
    m_attempt = std::make_shared<Attempt>();
    std::thread([attempt = m_attempt, endpoint, timeout] {
        attempt->result.set_value(Connect(endpoint, timeout));
        const std::uint64_t one = 1;
        [[maybe_unused]] const ssize_t written = write(attempt->event, &one, sizeof one);
    }).detach();
}

int Connector::Descriptor() const {
    return m_attempt ? m_attempt->event : -1;
}

Outcome<std::unique_ptr<Wire>> Connector::Take() {
    return std::exchange(m_attempt, nullptr)->result.get_future().get();
}

}  // namespace IpodControl::PlayerView
