// One client's socket and what is on its way to it: the part of a client that threads share.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

#include "JsonRpc/CloseReason.h"
#include "JsonRpc/Limits.h"
#include "JsonRpc/OutputQueue.h"
#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/Mutex.h"

namespace Json::Rpc {

/// Any thread may call any of it; nothing waits for the client. The last one to let go closes the descriptor,
/// so its number never names another file while anyone still uses it.
class Connection {
  public:
    using Clock = std::chrono::steady_clock;

    enum class Sent {
        Whole,
        Queued,   ///< Flush is to be called when the socket has room
        Refused,  ///< the connection takes no more texts, or has just been broken
    };

    /// Takes over a connected socket. The limits must outlive the connection.
    Connection(Descriptor socket, const Limits& limits);

    int Fd() const { return m_socket.Get(); }

    /// Hands the text over whole or not at all. What the socket does not take at once is queued; a client to
    /// whom too much is owed then is shut down.
    Sent Send(std::string text, OutputQueue::Kind kind);
    Sent Send(const SharedText& text, OutputQueue::Kind kind);

    /// Sends on what is queued.
    void Flush();

    /// Takes no more texts, and ends the stream to the client once it has what is queued.
    void EndSending(CloseReason reason);

    /// Ends the connection in both directions and lets the queue go. The first reason given stays.
    void Shutdown(CloseReason reason);

    /// Shuts a client down that has taken too little of what it is owed.
    void CheckProgress(Clock::time_point now);

    /// When that is to be looked at; meaningful while anything is owed.
    Clock::time_point ProgressEnd() const;

    bool IsDown() const { return m_isDown.load(); }
    bool TakesTexts() const { return m_takesTexts.load(); }
    bool Owes() const { return m_owes.load(); }
    bool OwesAnswer() const { return m_owesAnswer.load(); }

    /// Why the server has ended the connection.
    CloseReason Reason() const;

  private:
    template <typename Share>
    Sent SendOrQueue(std::string_view text, OutputQueue::Kind kind, Share share);
    void Update() REQUIRES(m_mutex);
    void BeginProgress(Clock::time_point now) REQUIRES(m_mutex);
    void ShutdownLocked(CloseReason reason) REQUIRES(m_mutex);
    std::uint64_t AcknowledgedBytes() const REQUIRES(m_mutex);

    const Limits& m_limits;
    const Descriptor m_socket;

    mutable Mutex m_mutex;  // held across a send, which never waits
    OutputQueue m_output GUARDED_BY(m_mutex);
    CloseReason m_reason GUARDED_BY(m_mutex) = CloseReason::None;
    Clock::time_point m_progressEnd GUARDED_BY(m_mutex);
    std::uint64_t m_acknowledgedBefore GUARDED_BY(m_mutex) = 0;

    // Written under the mutex.
    std::atomic<bool> m_isDown{false};
    std::atomic<bool> m_takesTexts{true};
    std::atomic<bool> m_owes{false};
    std::atomic<bool> m_owesAnswer{false};
};

}  // namespace Json::Rpc
