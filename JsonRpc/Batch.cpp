#include "JsonRpc/Batch.h"

#include <utility>

namespace Json::Rpc {

namespace {

constexpr std::string_view kBetweenRequests = " \t\r\n,";

/// The end of the string that begins at `at`.
std::size_t SkipString(std::string_view text, std::size_t at) {
    for (++at; text[at] != '"'; ++at) {
        at += text[at] == '\\' ? 1U : 0U;
    }
    return at + 1;
}

/// The end of the value that begins at `at`, inside an array.
std::size_t SkipValue(std::string_view text, std::size_t at) {
    int depth = 0;
    while (depth > 0 || (text[at] != ',' && text[at] != ']')) {
        const char c = text[at];
        depth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
        at = c == '"' ? SkipString(text, at) : at + 1;
    }
    return at;
}

}  // namespace

void Batch::FindNext() {
    const std::string_view text = m_text;
    m_at = text.find_first_not_of(kBetweenRequests, m_at);
    const std::size_t end = SkipValue(text, m_at);
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
