// What one client may ask of the server, and how long the server waits for one.
#pragma once

#include <chrono>
#include <cstddef>

namespace Json::Rpc {

/// Part of the protocol that clients see. The values that stand here are the service's; a server of another
/// purpose may be given others.
struct Limits {
    /// Longest request or batch, in bytes, and most values in it (members of objects and arrays, at any
    /// depth). A text beyond either is answered with a parse error and its connection closed.
    std::size_t requestBytes = std::size_t{128} * 1024;
    std::size_t requestValues = 16384;

    /// Deepest nesting of arrays and objects in a request; a deeper one is a parse error.
    std::size_t nesting = 64;

    /// Unfinished requests of all clients together, in bytes. Beyond it the client with the oldest one is
    /// answered with a parse error and closed.
    std::size_t unfinishedBytes = std::size_t{4} * 1024 * 1024;

    /// How long a request that is begun may remain unfinished; then it is treated as one that is too long.
    std::chrono::milliseconds requestTime{10000};

    /// Most requests of one batch; a longer one is answered with one "invalid request", and none of it is
    /// executed.
    std::size_t batchRequests = 1024;

    /// Once the replies of a batch fill this many bytes, its remaining requests are answered with an internal
    /// error and not executed: a small batch of requests for pictures must not eat the unit's memory.
    std::size_t batchReplyBytes = std::size_t{16} * 1024 * 1024;

    /// A client's turn ends after so many requests or so much time, whichever comes first. So many requests
    /// of a batch are executed in one turn whatever they take.
    int turnRequests = 32;
    std::chrono::milliseconds turnTime{20};

    /// A client whose last two turns took longer waits for the quick ones.
    std::chrono::milliseconds quickTurn{2};

    /// A client that has acknowledged less than so many bytes in so much time, while it is owed any, is
    /// disconnected.
    std::size_t progressBytes = std::size_t{64} * 1024;
    std::chrono::milliseconds progressTime{10000};

    /// A client to whom more bytes of notifications are owed is disconnected.
    std::size_t notificationBytes = std::size_t{4} * 1024 * 1024;

    /// Clients connected at a time. For another one the client goes that has been in the middle of a request
    /// for the longest; when there is none, the new one is closed.
    std::size_t clients = 256;

    /// How long a client that is being closed may go on sending, so that it can read the last reply.
    std::chrono::milliseconds drainTime{1000};

    /// What the end of the server waits for clients to take what they are owed.
    std::chrono::milliseconds flushTime{100};

    /// Rest from accepting when the system has no descriptor or memory for another connection.
    std::chrono::milliseconds acceptPause{100};
};

/// Most bytes read from one client in its turn.
inline constexpr std::size_t kReadBytes = std::size_t{16} * 1024;

/// Most bytes handed to the system at a time for one client that takes them as fast as they come.
inline constexpr std::size_t kSendBytes = std::size_t{1024} * 1024;

/// Once so much memory has been let go, in texts of at least so many bytes, it is given back to the system.
inline constexpr std::size_t kTrimBytes = std::size_t{512} * 1024;
inline constexpr std::size_t kLargeBytes = std::size_t{16} * 1024;

}  // namespace Json::Rpc
