// One client as the server thread serves it: what it sends, its turn, its end.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "JsonRpc/Batch.h"
#include "JsonRpc/Connection.h"
#include "JsonRpc/Limits.h"
#include "JsonRpc/MessageScanner.h"
#include "JsonRpc/Server.h"
#include "ServiceUtil/ThreadRole.h"

namespace Json::Rpc {

/// What a client's turn works with, and when it ends.
struct Turn {
    Server& server;
    std::vector<char>& readBuffer;
    const std::function<bool()>& shouldPause;  ///< may be empty
    std::chrono::steady_clock::time_point end;
    int requestsLeft;
    std::size_t largeBytes = 0;  ///< of texts worth giving their memory back

    void Used(std::size_t bytes) { largeBytes += bytes >= kLargeBytes ? bytes : 0; }
    bool IsPaused() const { return shouldPause && shouldPause(); }
    bool IsOver() const { return requestsLeft <= 0 || std::chrono::steady_clock::now() >= end || IsPaused(); }
};

/// Server thread only.
class Client {
  public:
    using Clock = Connection::Clock;

    Client(std::shared_ptr<Connection> connection, const Limits& limits);

    Connection& GetConnection() const { return *m_connection; }
    std::chrono::milliseconds ConnectedTime(Clock::time_point now) const;

    /// What is to be awaited of the connection, as EventPoll has it.
    std::uint32_t Events() const;

    /// Takes what has happened. True when the client is to have a turn.
    bool Attend(std::uint32_t events) REQUIRES(kServerThread);

    /// True when a turn gets on without anything having arrived.
    bool HasWork() const;

    /// Reads and answers for one turn.
    void TakeTurn(Turn& turn) REQUIRES(kServerThread);

    /// When CheckTime is to be called at the latest.
    Clock::time_point Deadline() const;
    void CheckTime(Clock::time_point now) REQUIRES(kServerThread);

    /// Since when the client has been in the middle of a request, or on its way out.
    std::optional<Clock::time_point> WaitedForSince() const { return m_waitedForSince; }

    /// What the client's unfinished request takes, 0 when there is none.
    std::size_t UnfinishedBytes() const;

    /// Answers with a parse error and reads nothing more; the connection ends once that is taken.
    void Refuse(CloseReason reason) REQUIRES(kServerThread);

    /// Answers a batch that is under way without executing the rest of it.
    void DeclineBatch(Server& server) REQUIRES(kServerThread);

    /// True when the client is to be removed.
    bool IsFinished() const { return m_phase == Phase::Finished || m_connection->IsDown(); }

    // Kept by those who give the turns
    std::uint32_t awaited = 0;  ///< what the system has been told of Events
    bool isQueued = false;
    bool isQuick = false;  ///< one of its last two turns was short: any may be held up by another process
    bool wasLastTurnShort = false;

  private:
    enum class Phase {
        Serving,   ///< requests are read and answered
        Draining,  ///< the stream to the client is at its end, and what arrives is thrown away
        Finished,
    };

    void Receive(Turn& turn) REQUIRES(kServerThread);
    void Discard(Turn& turn) REQUIRES(kServerThread);
    void Serve(Turn& turn) REQUIRES(kServerThread);
    void ServeText(const FramedText& text, Turn& turn) REQUIRES(kServerThread);
    void BeginBatch(const FramedText& text, Turn& turn) REQUIRES(kServerThread);
    void ContinueBatch(Turn& turn) REQUIRES(kServerThread);
    void AwaitMore() REQUIRES(kServerThread);
    void EndService(CloseReason reason) REQUIRES(kServerThread);
    void Answer(std::string reply) REQUIRES(kServerThread);

    const Limits& m_limits;
    const std::shared_ptr<Connection> m_connection;
    const Clock::time_point m_connectedSince = Clock::now();
    Phase m_phase = Phase::Serving;
    std::optional<MessageScanner> m_scanner;
    std::optional<Batch> m_batch;
    bool m_hasBacklog = false;  // the scanner may hold texts that have not been served
    bool m_hasEnded = false;    // the client has sent its last byte
    std::optional<Clock::time_point> m_waitedForSince;
};

}  // namespace Json::Rpc
