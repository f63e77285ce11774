// A batch under way, over as many turns as it takes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "JsonRpc/Server.h"

namespace Json::Rpc {

/// Belongs to one client. Requests are parsed one at a time, so that a batch costs its text and its replies.
class Batch {
  public:
    /// `text` is a JSON array that is not empty and of which the grammar has been checked.
    explicit Batch(std::string_view text) : m_text(text) { FindNext(); }
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    bool IsWhole() const { return m_next.empty(); }

    /// Answers the next request: carries it out unless it is declined.
    void AnswerNext(Server& server, bool isDeclined) REQUIRES(kServerThread);

    /// The size of the replies so far.
    std::size_t ReplyBytes() const { return m_replies.size(); }

    /// The reply, one line, once the batch is whole.
    std::string TakeReply();

  private:
    void FindNext();

    std::string m_text;
    std::size_t m_at = 1;
    std::string_view m_next;
    std::string m_replies;
};

}  // namespace Json::Rpc
