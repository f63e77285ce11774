#pragma once

#include <chrono>
#include <cstddef>

/// What one client may ask of the server and how long the server waits for one. Part of the protocol that
/// clients see.
namespace Json::Rpc::Limits {

/// Longest request text, in bytes. A longer one is answered with a parse error and its connection closed.
inline constexpr std::size_t kRequestBytes = std::size_t{1024} * 1024;

/// Deepest nesting of arrays and objects in a request; a deeper one is a parse error.
inline constexpr std::size_t kNesting = 64;

/// Most requests of one batch; a longer one is answered with one "invalid request", and none of it is
/// executed.
inline constexpr unsigned kBatchRequests = 1024;

/// Once the replies of a batch fill this many bytes, its remaining requests are answered with an internal
/// error and not executed: a small batch of requests for pictures must not eat the unit's memory.
inline constexpr std::size_t kBatchReplyBytes = std::size_t{16} * 1024 * 1024;

/// After a reply of so many bytes the memory that it took is given back to the system.
inline constexpr std::size_t kTrimReplyBytes = std::size_t{1024} * 1024;

/// Clients connected at a time; the next one is accepted and closed at once.
inline constexpr std::size_t kClients = 256;

/// Most bytes read from one client before the others get their turn.
inline constexpr std::size_t kReadBytesPerRound = std::size_t{64} * 1024;

/// Most requests of one client executed before the others get their turn.
inline constexpr int kTextsPerRound = 32;

/// Most connections accepted before the connected clients get their turn.
inline constexpr int kAcceptsPerRound = 32;

/// What a broadcast may wait for all its clients together.
inline constexpr std::chrono::milliseconds kBroadcastWait{500};

/// What a response may wait without the client taking a byte, and in all.
inline constexpr std::chrono::milliseconds kResponseStall{1000};
inline constexpr std::chrono::milliseconds kResponseWait{5000};

/// How long a client that is being closed for an oversized request may go on sending, so that it can read the
/// reply.
inline constexpr std::chrono::milliseconds kDrainTime{1000};

/// Rest from accepting when the system has no descriptor or memory for another connection.
inline constexpr std::chrono::milliseconds kAcceptPause{100};

}  // namespace Json::Rpc::Limits
