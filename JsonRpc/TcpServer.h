// JSON-RPC 2.0 over TCP.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "JsonRpc/Client.h"
#include "JsonRpc/CloseReason.h"
#include "JsonRpc/ConnectionList.h"
#include "JsonRpc/EventPoll.h"
#include "JsonRpc/Limits.h"
#include "JsonRpc/Listener.h"
#include "JsonRpc/Server.h"
#include "JsonRpc/TurnQueue.h"
#include "ServiceUtil/ThreadRole.h"
#include "ServiceUtil/WakeUp.h"

namespace Json::Rpc {

/// Accepts clients, answers their requests turn by turn, and sends them texts of the owner's own. Nothing
/// waits for a client. Methods run on the server thread, inside WaitMessage. No call throws for what a client
/// does.
class TcpServer : public Server {
  public:
    /// The address is a numeric IPv4 or IPv6 text; with port 0 the system picks one.
    TcpServer(std::string address, std::uint16_t port, const Limits& limits = {});

    /// Closes what is open. No other thread may be inside a call.
    ~TcpServer() override;

    /// Binds the socket. False when the address is not valid or taken; may then be tried again.
    bool Bind() REQUIRES(kServerThread);

    /// The system's reason for the last failure of Bind or Listen, for people.
    std::string GetBindError() const REQUIRES(kServerThread);

    /// Starts accepting; after Bind. False when another socket listens on the port already.
    bool Listen() REQUIRES(kServerThread);

    /// The port in use once bound, 0 before and after Close. Any thread.
    std::uint16_t GetPort() const { return m_boundPort.load(); }

    /// Sleeps until there is something to do, at most so many milliseconds (negative: for ever), serves one
    /// client's turn and returns; a signal ends the sleep early. Clients have their turns one after the
    /// other.
    void WaitMessage(int milliseconds) REQUIRES(kServerThread);

    /// Makes the present WaitMessage, or the next, return without sleeping on. Any thread, and signal
    /// handlers.
    void Wake() { m_wakeUp.Raise(); }

    /// Is asked between two requests of a turn; true ends the turn there, inside a batch too. Cheap. Before
    /// the first WaitMessage.
    void SetPauseTest(std::function<bool()> shouldPause) REQUIRES(kServerThread);

    /// Is told of each client that a limit has disconnected, on the server thread. Before the first
    /// WaitMessage.
    void SetCloseListener(std::function<void(const ClosedClient&)> listener) REQUIRES(kServerThread);

    /// The descriptors of the connected clients, oldest first. Any thread.
    std::vector<int> GetClients() const { return m_connections.Descriptors(); }

    /// Sends the text, whole, to one client, behind what it is owed already. Returns its length, or -1 when
    /// there is no such client or it has just been disconnected for what it leaves untaken. Any thread.
    ssize_t Send(int fd, std::string text);

    /// Sends the text to all clients, to each behind what it is owed already; all see all texts in one order.
    /// Returns how many clients it goes to. Any thread.
    std::size_t Broadcast(std::string text);

    /// Stops listening and reading, waits a moment for clients to take what they are owed, and disconnects
    /// them. A batch under way is answered, the rest of it with errors. Again does nothing.
    void Close() REQUIRES(kServerThread);

  private:
    using Clock = std::chrono::steady_clock;

    Client* NextInTurn(int milliseconds) REQUIRES(kServerThread);
    void Poll(int milliseconds) REQUIRES(kServerThread);
    int TimeToWait(int milliseconds) const REQUIRES(kServerThread);
    bool AttendAll(std::span<const epoll_event> events) REQUIRES(kServerThread);
    void Attend(Client& client, std::uint32_t events) REQUIRES(kServerThread);
    void AcceptClients() REQUIRES(kServerThread);
    bool MakeRoom() REQUIRES(kServerThread);
    void AddClient(Descriptor socket) REQUIRES(kServerThread);
    bool Settle(Client& client) REQUIRES(kServerThread);
    void SettleAll() REQUIRES(kServerThread);
    void Remove(Client& client) REQUIRES(kServerThread);
    void CheckTimes(Clock::time_point now) REQUIRES(kServerThread);
    void AwaitNewcomers(Clock::time_point now) REQUIRES(kServerThread);
    void Serve(Client& client) REQUIRES(kServerThread);
    void ServeTurn(Client& client) REQUIRES(kServerThread);
    bool IsShort(Clock::time_point start, Clock::time_point end) const REQUIRES(kServerThread);
    bool KeepUnfinishedInBounds() REQUIRES(kServerThread);
    Client* LongestWaitedFor(bool inRequestOnly) REQUIRES(kServerThread);
    void Flush() REQUIRES(kServerThread);
    void GiveBack(std::size_t bytes) REQUIRES(kServerThread);

    const std::string m_address;
    const std::uint16_t m_port;
    const Limits m_limits;
    WakeUp m_wakeUp;
    ConnectionList m_connections;
    std::atomic<std::uint16_t> m_boundPort{0};
    std::atomic<bool> m_hasDebts{
        false};  // all clients are to be settled: another thread has queued something

    Listener m_listener GUARDED_BY(kServerThread);
    std::vector<std::unique_ptr<Client>> m_clients GUARDED_BY(kServerThread);
    TurnQueue m_turns GUARDED_BY(kServerThread);
    EventPoll m_poll GUARDED_BY(kServerThread);  // tags: the client, the listener, the wake-up
    Clock::time_point m_lastPoll GUARDED_BY(kServerThread);
    Clock::time_point m_nextCheck
        GUARDED_BY(kServerThread);  // no client's deadline, nor a pause's end, is earlier
    bool m_awaitsNewcomers GUARDED_BY(kServerThread) = false;
    struct {
        Clock::time_point at;
        std::chrono::nanoseconds used{0};  // that this thread has had of a processor by then
    } m_processorMark GUARDED_BY(kServerThread);
    std::vector<char> m_readBuffer GUARDED_BY(kServerThread);
    std::function<bool()> m_shouldPause GUARDED_BY(kServerThread);
    std::function<void(const ClosedClient&)> m_closeListener GUARDED_BY(kServerThread);
    int m_bindError GUARDED_BY(kServerThread) = 0;
    std::size_t m_released GUARDED_BY(kServerThread) = 0;  // bytes let go since the last trim
};

}  // namespace Json::Rpc
