#include "JsonRpc/TcpServer.h"

#include <malloc.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <exception>
#include <system_error>
#include <utility>

namespace Json::Rpc {

namespace {

using Kind = OutputQueue::Kind;

constexpr int kAcceptsPerPoll = 32;

/// What this thread has had of a processor.
std::chrono::nanoseconds ThreadTime() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

void SetOption(int fd, int level, int option, int value) {
    ::setsockopt(fd, level, option, &value, sizeof(value));
}

void Configure(int fd) {
    SetOption(fd, IPPROTO_TCP, TCP_NODELAY, 1);
    // A peer that has vanished without a word is noticed after two minutes.
    SetOption(fd, SOL_SOCKET, SO_KEEPALIVE, 1);
    SetOption(fd, IPPROTO_TCP, TCP_KEEPIDLE, 60);
    SetOption(fd, IPPROTO_TCP, TCP_KEEPINTVL, 20);
    SetOption(fd, IPPROTO_TCP, TCP_KEEPCNT, 3);
}

/// From now to then for poll, rounded up; never longer than `atMost`, which is endless when negative.
int MillisecondsUntil(std::chrono::steady_clock::time_point then, std::chrono::steady_clock::time_point now,
                      int atMost) {
    if (then == std::chrono::steady_clock::time_point::max()) {
        return atMost;
    }
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(then - now).count();
    const int wait = static_cast<int>(std::clamp<std::int64_t>(left, 0, 3600000));
    return atMost < 0 ? wait : std::min(wait, atMost);
}

}  // namespace

TcpServer::TcpServer(std::string address, std::uint16_t port, const Limits& limits)
    : m_address(std::move(address)),
      m_port(port),
      m_limits(limits),
      m_listener(limits.acceptPause),
      m_readBuffer(kReadBytes) {}

TcpServer::~TcpServer() {
    kServerThread.Assert();
    Close();
}

bool TcpServer::Bind() {
    const bool isBound = m_listener.Bind(m_address, m_port);
    m_bindError = isBound ? 0 : errno;
    m_boundPort = m_listener.Port();
    return isBound;
}

bool TcpServer::Listen() {
    const bool isListening = m_listener.Listen();
    m_bindError = isListening ? 0 : errno;
    return isListening;
}

std::string TcpServer::GetBindError() const {
    return std::generic_category().message(m_bindError);
}

void TcpServer::SetPauseTest(std::function<bool()> shouldPause) {
    m_shouldPause = std::move(shouldPause);
}

void TcpServer::SetCloseListener(std::function<void(const ClosedClient&)> listener) {
    m_closeListener = std::move(listener);
}

void TcpServer::WaitMessage(int milliseconds) {
    try {
        if (Client* client = NextInTurn(milliseconds)) {
            Serve(*client);
        }
    } catch (const std::exception&) {
        // Out of memory between two clients: what was not served is still there the next time.
    }
}

/// One poll does for a round of short turns; long ones have one each, so that output and newcomers do not
/// wait for the round's end.
Client* TcpServer::NextInTurn(int milliseconds) {
    Client* client = Clock::now() - m_lastPoll < m_limits.turnTime ? m_turns.TakeNext() : nullptr;
    if (client == nullptr) {
        Poll(milliseconds);
        m_turns.BeginRound();
        client = m_turns.TakeNext();
    }
    return client;
}

void TcpServer::Poll(int milliseconds) {
    CheckTimes(Clock::now());
    RemoveFinished();
    const int timeout = PreparePolls(Clock::now(), milliseconds);
    const int ready = ::poll(m_polls.data(), static_cast<nfds_t>(m_polls.size()), timeout);
    m_lastPoll = Clock::now();
    if (ready < 0 && errno != EINTR) {
        // No memory for it: do not spin.
        ::poll(nullptr, 0, static_cast<int>(m_limits.acceptPause.count()));
    }
    if (ready <= 0) {
        return;
    }
    if (m_polls.back().revents != 0) {
        m_wakeUp.Clear();
    }
    AttendClients();
    if (m_polls[m_clients.size()].revents != 0) {
        AcceptClients();
    }
}

void TcpServer::CheckTimes(Clock::time_point now) {
    for (const auto& client : m_clients) {
        if (client->Deadline() <= now) {
            const std::size_t held = client->UnfinishedBytes();
            client->CheckTime(now);
            GiveBack(held - client->UnfinishedBytes());
        }
    }
}

/// Fills the list of what to wait for and returns how long.
int TcpServer::PreparePolls(Clock::time_point now, int milliseconds) {
    Clock::time_point deadline = Clock::time_point::max();
    m_polls.clear();
    for (const auto& client : m_clients) {
        m_polls.push_back({client->GetConnection().Fd(), client->Events(), 0});
        deadline = std::min(deadline, client->Deadline());
        if (client->HasWork()) {
            m_turns.Add(*client);
        }
    }
    const int listener = m_listener.PollFd(now);
    m_polls.push_back({listener, POLLIN, 0});
    m_polls.push_back({m_wakeUp.Fd(), POLLIN, 0});
    if (listener < 0 && now < m_listener.PauseEnd()) {
        deadline = std::min(deadline, m_listener.PauseEnd());
    }
    return m_turns.IsEmpty() ? MillisecondsUntil(deadline, now, milliseconds) : 0;
}

void TcpServer::AttendClients() {
    for (std::size_t i = 0; i < m_clients.size(); ++i) {
        if (m_polls[i].revents != 0 && m_clients[i]->Attend(m_polls[i].revents)) {
            m_turns.Add(*m_clients[i]);
        }
    }
}

void TcpServer::AcceptClients() {
    for (int i = 0; i < kAcceptsPerPoll; ++i) {
        Descriptor socket = m_listener.Accept();
        if (!socket.IsOpen()) {
            return;
        }
        if (m_clients.size() < m_limits.clients || MakeRoom()) {
            AddClient(std::move(socket));
        }
    }
}

/// Disconnects a client that holds a place without being served.
bool TcpServer::MakeRoom() {
    Client* client = LongestWaitedFor(false);
    if (client == nullptr) {
        return false;
    }
    client->Refuse(CloseReason::TableFull);
    client->GetConnection().Shutdown(CloseReason::TableFull);
    RemoveFinished();
    return true;
}

void TcpServer::AddClient(Descriptor socket) {
    Configure(socket.Get());
    auto connection = std::make_shared<Connection>(std::move(socket), m_limits);
    m_clients.push_back(std::make_unique<Client>(connection, m_limits));
    m_connections.Add(std::move(connection));
}

void TcpServer::RemoveFinished() {
    const Clock::time_point now = Clock::now();
    for (std::size_t i = 0; i < m_clients.size();) {
        if (!m_clients[i]->IsFinished()) {
            ++i;
            continue;
        }
        const std::unique_ptr<Client> client = std::move(m_clients[i]);
        m_clients.erase(m_clients.begin() + static_cast<std::ptrdiff_t>(i));
        m_turns.Remove(*client);
        m_connections.Remove(client->GetConnection());
        GiveBack(client->UnfinishedBytes());
        const CloseReason reason = client->GetConnection().Reason();
        if (reason != CloseReason::None && m_closeListener) {
            m_closeListener({reason, client->ConnectedTime(now)});
        }
    }
}

void TcpServer::Serve(Client& client) {
    try {
        ServeTurn(client);
    } catch (const std::exception&) {
        client.GetConnection().Shutdown(CloseReason::OutOfMemory);
    }
}

void TcpServer::ServeTurn(Client& client) {
    const Clock::time_point start = Clock::now();
    const auto used = ThreadTime();
    Turn turn{*this, m_readBuffer, m_shouldPause, start + m_limits.turnTime, m_limits.turnRequests};
    const std::size_t held = client.UnfinishedBytes();
    client.TakeTurn(turn);
    const auto took = Clock::now() - start;
    // Where the unit is busy, another process may have had most of a longer one.
    const bool isShort =
        took < m_limits.quickTurn || (took < m_limits.turnTime && ThreadTime() - used < m_limits.quickTurn);
    client.isQuick = std::exchange(client.wasLastTurnShort, isShort) || isShort;
    GiveBack(turn.largeBytes + held - std::min(held, client.UnfinishedBytes()));
    if (client.HasWork()) {
        m_turns.Add(client);
    }
    if (client.UnfinishedBytes() > 0) {
        KeepUnfinishedInBounds();
    }
}

void TcpServer::KeepUnfinishedInBounds() {
    std::size_t bytes = 0;
    for (const auto& client : m_clients) {
        bytes += client->UnfinishedBytes();
    }
    while (bytes > m_limits.unfinishedBytes) {
        Client* client = LongestWaitedFor(true);
        bytes -= client->UnfinishedBytes();
        GiveBack(client->UnfinishedBytes());
        client->Refuse(CloseReason::InputTooLarge);
    }
}

/// Among those in the middle of a request, and those on their way out unless it is about the former only.
Client* TcpServer::LongestWaitedFor(bool inRequestOnly) {
    Client* longest = nullptr;
    for (const auto& client : m_clients) {
        const auto since = client->WaitedForSince();
        if (since && (client->UnfinishedBytes() > 0 || !inRequestOnly) &&
            (longest == nullptr || *since < *longest->WaitedForSince())) {
            longest = client.get();
        }
    }
    return longest;
}

/// Long lists are built of hundreds of thousands of small blocks, which the allocator would keep.
void TcpServer::GiveBack(std::size_t bytes) {
    m_released += bytes;
    if (m_released >= kTrimBytes) {
        m_released = 0;
        ::malloc_trim(0);
    }
}

ssize_t TcpServer::Send(int fd, std::string text) {
    const auto connection = m_connections.Find(fd);
    if (!connection) {
        return -1;
    }
    const auto length = static_cast<ssize_t>(text.size());
    const auto sent =
        connection->Send(std::make_shared<const std::string>(std::move(text)), Kind::Notification);
    if (sent != Connection::Sent::Whole) {
        Wake();
    }
    return sent == Connection::Sent::Refused ? -1 : length;
}

std::size_t TcpServer::Broadcast(std::string text) {
    const auto delivery = m_connections.Broadcast(std::make_shared<const std::string>(std::move(text)));
    if (delivery.needsAttention) {
        Wake();
    }
    return delivery.clients;
}

void TcpServer::Close() {
    m_listener.Close();
    m_boundPort = 0;
    for (const auto& client : m_clients) {
        client->DeclineBatch(*this);
    }
    Flush();
    for (const auto& client : m_clients) {
        client->GetConnection().Shutdown(CloseReason::None);
        m_connections.Remove(client->GetConnection());
    }
    m_turns.Clear();
    m_clients.clear();
}

void TcpServer::Flush() {
    const Clock::time_point end = Clock::now() + m_limits.flushTime;
    for (Clock::time_point now = Clock::now(); now < end; now = Clock::now()) {
        m_polls.clear();
        for (const auto& client : m_clients) {
            if (client->GetConnection().Owes()) {
                client->GetConnection().Flush();
                m_polls.push_back({client->GetConnection().Fd(), POLLOUT, 0});
            }
        }
        if (m_polls.empty()) {
            return;
        }
        ::poll(m_polls.data(), static_cast<nfds_t>(m_polls.size()), MillisecondsUntil(end, now, -1));
    }
}

}  // namespace Json::Rpc
