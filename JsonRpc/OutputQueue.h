// What one client is owed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

namespace Json::Rpc {

/// Shared by the queues of all clients that it goes to.
using SharedText = std::shared_ptr<const std::string>;

/// Texts on their way to one socket, in their order. One thread at a time.
class OutputQueue {
  public:
    enum class Kind { Answer, Notification };

    /// Hands the socket what it takes without waiting of a text before it is queued; `sent` tells how much.
    /// The queue is empty. False when the connection is broken.
    bool SendAhead(int fd, std::string_view text, std::size_t& sent);

    /// The rest of the text, behind the first `sent` bytes; these are more than none only for the first text.
    void Push(SharedText text, Kind kind, std::size_t sent);

    /// Hands the socket what it takes without waiting. False when the connection is broken.
    bool SendTo(int fd);

    /// Lets all texts go.
    void Clear();

    bool IsEmpty() const { return m_texts.empty(); }
    std::size_t Answers() const { return m_answers; }
    std::size_t NotificationBytes() const { return m_notificationBytes; }

    /// What the socket has taken since the beginning.
    std::uint64_t SentBytes() const { return m_sentBytes; }

  private:
    struct Entry {
        SharedText text;
        Kind kind;
    };

    void Count(std::size_t sent);

    std::deque<Entry> m_texts;
    std::size_t m_firstSent = 0;  // of the first text
    std::size_t m_answers = 0;
    std::size_t m_notificationBytes = 0;
    std::uint64_t m_sentBytes = 0;
};

}  // namespace Json::Rpc
