#include "DeviceSimulator/client/PlayerLink.h"

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "DeviceSimulator/wire/Thread.h"
#include "ServiceUtil/ChildProcess.h"

namespace DeviceSimulator {

namespace {

/// So many threads rarely call at once; what is more is closed when it is done.
constexpr std::size_t kMostIdle = 8;

std::uint64_t RandomNumber() {
    std::uint64_t number = 0;
    while (getrandom(&number, sizeof(number), 0) < 0 && errno == EINTR) {
    }
    return number;
}

std::uint64_t ThisThread() {
    static thread_local const auto kThread = static_cast<std::uint64_t>(syscall(SYS_gettid));
    return kThread;
}

}  // namespace

std::shared_ptr<PlayerLink> PlayerLink::Open(std::uint32_t firstProcess) {
    const Wire::Hello hello{.firstProcess = firstProcess, .client = RandomNumber()};
    auto player = FindPlayer(hello);
    if (!player) {
        return nullptr;
    }
    const auto link = std::make_shared<PlayerLink>(std::move(*player), hello);
    StartThread("devmgr-events", [link] { link->ReceiveEvents(); }).detach();
    return link;
}

PlayerLink::PlayerLink(FoundPlayer player, const Wire::Hello& hello)
    : m_player(std::move(player)), m_hello(hello) {
    m_hello.kind = Wire::ConnectionKind::Calls;
}

std::unique_ptr<CallConnection> PlayerLink::Take() {
    {
        const std::lock_guard lock(m_mutex);
        if (!m_idle.empty()) {
            auto connection = std::move(m_idle.back());
            m_idle.pop_back();
            return connection;
        }
    }
    auto connection = std::make_unique<CallConnection>();
    connection->socket = m_isAlive ? ConnectOnceMore(m_player.address, m_hello) : Descriptor{};
    return connection->socket.IsOpen() ? std::move(connection) : nullptr;
}

void PlayerLink::Return(std::unique_ptr<CallConnection> connection) {
    const std::lock_guard lock(m_mutex);
    if (m_isAlive && m_idle.size() < kMostIdle) {
        m_idle.push_back(std::move(connection));
    }
}

std::optional<std::uint32_t> PlayerLink::Exchange(CallConnection& connection, FunctionId function) {
    Wire::CallHead head;
    head.length = static_cast<std::uint32_t>(connection.call.size() - sizeof(head));
    head.function = static_cast<std::uint32_t>(function);
    head.thread = ThisThread();
    std::memcpy(connection.call.data(), &head, sizeof(head));
    if (!SendAll(connection.socket.Get(), connection.call)) {
        return std::nullopt;
    }
    connection.answer = Wire::ReceiveMessage(connection.socket.Get(), connection.buffer,
                                             sizeof(Wire::AnswerHead), UINT32_MAX, connection.memory);
    if (connection.answer.empty()) {
        return std::nullopt;
    }
    return Wire::Taker(connection.answer).Take<Wire::AnswerHead>().result;
}

void PlayerLink::Lose() {
    m_callbacks->WaitNoLonger();
    const std::lock_guard lock(m_mutex);
    m_isAlive = false;
    m_idle.clear();
    shutdown(m_player.socket.Get(), SHUT_RDWR);
}

void PlayerLink::ReceiveEvents() {
    Wire::EventMessage message;
    while (Wire::ReceiveFlat(m_player.socket.Get(), message)) {
        m_callbacks->Deliver(message.event, message.process);
    }
    Lose();
    DeviceEvent exited{};
    exited.words[0] = DEV_MGR_EVENT_DEVICE_MANAGER_EXITED;
    m_callbacks->DeliverToAll(exited);
    if (m_player.child >= 0) {
        // It has gone; this leaves nothing of it behind.
        WaitForChild(m_player.child);
    }
}

}  // namespace DeviceSimulator
