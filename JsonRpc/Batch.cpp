#include "JsonRpc/Batch.h"

#include <utility>

#include "JsonRpc/JsonSpan.h"

namespace Json::Rpc {

void Batch::FindNext() {
    const std::string_view text = m_text;
    m_at = SkipSeparators(text, m_at);
    const std::size_t end = EndOfValue(text, m_at);
    m_next = text.substr(m_at, end - m_at);
    m_at = end;
}

void Batch::AnswerNext(Server& server, bool isDeclined) {
    const std::string reply = isDeclined ? server.Decline(m_next) : server.Execute(m_next);
    m_replies += m_replies.empty() ? '[' : ',';
    m_replies.append(reply, 0, reply.size() - 1);
    FindNext();
}

std::string Batch::TakeReply() {
    m_replies += "]\n";
    return std::move(m_replies);
}

}  // namespace Json::Rpc
