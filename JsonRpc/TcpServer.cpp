#include "JsonRpc/TcpServer.h"

#include <malloc.h>
#include <poll.h>

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

/// Rounded up, and an hour at most: for the system's waits, which look again.
int MillisecondsUntil(std::chrono::steady_clock::time_point then) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(then - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 3600000));
}

}  // namespace

TcpServer::TcpServer(std::string address, std::uint16_t port, const Limits& limits)
    : m_address(std::move(address)),
      m_port(port),
      m_limits(limits),
      m_listener(limits.acceptPause),
      m_nextCheck(Clock::time_point::max()),
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
    const bool isListening = m_poll.Open() && m_poll.Add(m_wakeUp.Fd(), EPOLLIN, &m_wakeUp) &&
                             m_poll.Add(m_listener.Fd(), EPOLLIN, &m_listener) && m_listener.Listen();
    m_awaitsNewcomers = isListening;
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
        m_hasDebts = true;
    }
}

/// One wait does for a round of short turns; long ones have one each, so that output and newcomers do not
/// wait for the round's end.
Client* TcpServer::NextInTurn(int milliseconds) {
    const bool isInRound = !m_turns.IsEmpty() && Clock::now() - m_lastPoll < m_limits.turnTime;
    Client* client = isInRound ? m_turns.TakeNext() : nullptr;
    if (client == nullptr) {
        Poll(milliseconds);
        m_turns.BeginRound();
        client = m_turns.TakeNext();
    }
    return client;
}

void TcpServer::Poll(int milliseconds) {
    bool hasFailed = false;
    const auto events = m_poll.Wait(TimeToWait(milliseconds), hasFailed);
    m_lastPoll = Clock::now();
    if (hasFailed) {
        ::poll(nullptr, 0, static_cast<int>(m_limits.acceptPause.count()));  // do not spin
    }
    // Newcomers last: for one of them another client may have to go that something has happened to.
    const bool hasNewcomers = AttendAll(events);
    if (m_hasDebts.exchange(false)) {
        SettleAll();
    }
    if (m_lastPoll >= m_nextCheck) {
        CheckTimes(m_lastPoll);
    }
    if (hasNewcomers) {
        AcceptClients();
    }
}

int TcpServer::TimeToWait(int milliseconds) const {
    if (!m_turns.IsEmpty() || m_hasDebts) {
        return 0;
    }
    if (m_nextCheck == Clock::time_point::max()) {
        return milliseconds;
    }
    const int wait = MillisecondsUntil(m_nextCheck);
    return milliseconds < 0 ? wait : std::min(milliseconds, wait);
}

/// True when there are newcomers.
bool TcpServer::AttendAll(std::span<const epoll_event> events) {
    bool hasNewcomers = false;
    for (const epoll_event& event : events) {
        if (event.data.ptr == &m_listener) {
            hasNewcomers = true;
        } else if (event.data.ptr == &m_wakeUp) {
            m_wakeUp.Clear();
        } else {
            Attend(*static_cast<Client*>(event.data.ptr), event.events);
        }
    }
    return hasNewcomers;
}

void TcpServer::Attend(Client& client, std::uint32_t events) {
    if (client.Attend(events)) {
        m_turns.Add(client);
    }
    Settle(client);
}

void TcpServer::AcceptClients() {
    for (int i = 0; i < kAcceptsPerPoll; ++i) {
        Descriptor socket = m_listener.Accept();
        if (!socket.IsOpen()) {
            AwaitNewcomers(Clock::now());
            return;
        }
        if (m_clients.size() < m_limits.clients || MakeRoom()) {
            AddClient(std::move(socket));
        }
    }
}

/// Unless accepting rests.
void TcpServer::AwaitNewcomers(Clock::time_point now) {
    const bool awaits = m_listener.PauseEnd() <= now;
    if (awaits != m_awaitsNewcomers) {
        m_poll.Modify(m_listener.Fd(), awaits ? std::uint32_t{EPOLLIN} : 0, &m_listener);
        m_awaitsNewcomers = awaits;
    }
    if (!awaits) {
        m_nextCheck = std::min(m_nextCheck, m_listener.PauseEnd());
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
    Remove(*client);
    return true;
}

void TcpServer::AddClient(Descriptor socket) {
    auto connection = std::make_shared<Connection>(std::move(socket), m_limits);
    m_clients.push_back(std::make_unique<Client>(connection, m_limits));
    Client& client = *m_clients.back();
    client.awaited = client.Events();
    if (!m_poll.Add(connection->Fd(), client.awaited, &client)) {
        m_clients.pop_back();
        return;
    }
    m_connections.Add(std::move(connection));
}

/// To be called when something has happened to the client. False when it has been removed.
bool TcpServer::Settle(Client& client) {
    if (client.IsFinished()) {
        Remove(client);
        return false;
    }
    if (client.HasWork()) {
        m_turns.Add(client);
    }
    const std::uint32_t events = client.Events();
    if (client.awaited != events) {
        m_poll.Modify(client.GetConnection().Fd(), events, &client);
        client.awaited = events;
    }
    m_nextCheck = std::min(m_nextCheck, client.Deadline());
    return true;
}

void TcpServer::SettleAll() {
    for (std::size_t i = 0; i < m_clients.size();) {
        i += Settle(*m_clients[i]) ? 1U : 0U;
    }
}

void TcpServer::Remove(Client& client) {
    const auto found =
        std::find_if(m_clients.begin(), m_clients.end(),
                     [&client](const std::unique_ptr<Client>& listed) { return listed.get() == &client; });
    const std::unique_ptr<Client> removed = std::move(*found);
    m_clients.erase(found);
    m_turns.Remove(client);
    m_poll.Remove(client.GetConnection().Fd());
    m_connections.Remove(client.GetConnection());
    GiveBack(client.UnfinishedBytes());
    const CloseReason reason = client.GetConnection().Reason();
    if (reason != CloseReason::None && m_closeListener) {
        m_closeListener({reason, client.ConnectedTime(Clock::now())});
    }
}

/// Deadlines move without a word when they move away; then this finds nothing to do but the next one.
void TcpServer::CheckTimes(Clock::time_point now) {
    m_nextCheck = Clock::time_point::max();
    AwaitNewcomers(now);
    for (std::size_t i = 0; i < m_clients.size();) {
        Client& client = *m_clients[i];
        if (client.Deadline() <= now) {
            const std::size_t held = client.UnfinishedBytes();
            client.CheckTime(now);
            GiveBack(held - client.UnfinishedBytes());
        }
        i += Settle(client) ? 1U : 0U;
    }
}

void TcpServer::Serve(Client& client) {
    try {
        ServeTurn(client);
    } catch (const std::exception&) {
        client.GetConnection().Shutdown(CloseReason::OutOfMemory);
    }
    if (client.UnfinishedBytes() > 0 && KeepUnfinishedInBounds()) {
        SettleAll();
    } else {
        Settle(client);
    }
}

void TcpServer::ServeTurn(Client& client) {
    const Clock::time_point start = Clock::now();
    // Asking the system costs as much as a small request does.
    if (start - m_processorMark.at > m_limits.quickTurn / 2) {
        m_processorMark = {start, ThreadTime()};
    }
    Turn turn{*this, m_readBuffer, m_shouldPause, start + m_limits.turnTime, m_limits.turnRequests};
    const std::size_t held = client.UnfinishedBytes();
    client.TakeTurn(turn);
    const bool isShort = IsShort(start, Clock::now());
    client.isQuick = std::exchange(client.wasLastTurnShort, isShort) || isShort;
    GiveBack(turn.largeBytes + held - std::min(held, client.UnfinishedBytes()));
}

/// Where the unit is busy, another process may have had most of a longer turn.
bool TcpServer::IsShort(Clock::time_point start, Clock::time_point end) const {
    return end - start < m_limits.quickTurn ||
           (end - start < m_limits.turnTime && ThreadTime() - m_processorMark.used < m_limits.quickTurn);
}

/// True when that has cost a client its place.
bool TcpServer::KeepUnfinishedInBounds() {
    std::size_t bytes = 0;
    for (const auto& client : m_clients) {
        bytes += client->UnfinishedBytes();
    }
    const bool isTooMuch = bytes > m_limits.unfinishedBytes;
    while (bytes > m_limits.unfinishedBytes) {
        Client* client = LongestWaitedFor(true);
        bytes -= client->UnfinishedBytes();
        GiveBack(client->UnfinishedBytes());
        client->Refuse(CloseReason::InputTooLarge);
    }
    return isTooMuch;
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
    const auto sent = connection->Send(std::move(text), Kind::Notification);
    if (sent != Connection::Sent::Whole) {
        m_hasDebts = true;
        Wake();
    }
    return sent == Connection::Sent::Refused ? -1 : length;
}

std::size_t TcpServer::Broadcast(std::string text) {
    const auto delivery = m_connections.Broadcast(std::make_shared<const std::string>(std::move(text)));
    if (delivery.needsAttention) {
        m_hasDebts = true;
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
    m_poll.Close();
}

void TcpServer::Flush() {
    const Clock::time_point end = Clock::now() + m_limits.flushTime;
    while (Clock::now() < end) {
        std::vector<pollfd> owed;
        for (const auto& client : m_clients) {
            if (client->GetConnection().Owes()) {
                client->GetConnection().Flush();
                owed.push_back({client->GetConnection().Fd(), POLLOUT, 0});
            }
        }
        if (owed.empty()) {
            return;
        }
        ::poll(owed.data(), static_cast<nfds_t>(owed.size()), MillisecondsUntil(end));
    }
}

}  // namespace Json::Rpc
