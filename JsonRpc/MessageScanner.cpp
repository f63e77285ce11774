#include "JsonRpc/MessageScanner.h"

#include "JsonRpc/JsonSpan.h"

namespace Json::Rpc {

namespace {

using Kind = FramedText::Kind;

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kShortestHttpMethod = 3;
constexpr std::size_t kKeptCapacity = 4096;

bool Opens(char c) {
    return c == '{' || c == '[';
}

}  // namespace

void MessageScanner::Append(std::string_view bytes) {
    ReleaseConsumed();
    m_buffer.append(bytes);
}

std::optional<FramedText> MessageScanner::Next() {
    if (!m_isInside) {
        if (const auto found = FindText()) {
            return found;
        }
    }
    return m_isInside ? FollowText() : std::nullopt;
}

/// Looks for a bracket. Returns what stands before it, if that is to be answered.
std::optional<FramedText> MessageScanner::FindText() {
    for (; m_at < m_buffer.size(); ++m_at) {
        const char c = m_buffer[m_at];
        if (!m_isRubbish && IsSkipped(c)) {
            continue;
        }
        if (!m_isRubbish && (m_markBytes > 0 || !Opens(c))) {
            m_isRubbish = true;
            m_markBytes = 0;
            return FramedText{Kind::Rubbish};
        }
        if (Opens(c)) {
            BeginText();
            return std::nullopt;
        }
        if (EndsHttpMethod(c)) {
            return FramedText{Kind::Http};
        }
        m_isRubbish = c != '\n';
    }
    m_start = m_at;
    ReleaseConsumed();
    return std::nullopt;
}

void MessageScanner::BeginText() {
    m_grammar.Restart();
    m_isInside = true;
    m_isRubbish = false;
    m_isFirstWord = false;
    m_start = m_at;
    m_length = 0;
}

std::optional<FramedText> MessageScanner::FollowText() {
    const std::size_t begin = m_at;
    const std::string_view allowed =
        std::string_view(m_buffer).substr(0, begin + (m_limits.requestBytes - m_length));
    const JsonGrammar::Step step = m_grammar.Follow(allowed, m_at);
    m_length += m_at - begin;
    const bool isTooLong = step == JsonGrammar::Step::Goes && m_at < m_buffer.size();
    if (isTooLong || step == JsonGrammar::Step::TooMany) {
        return Take(Kind::TooLarge);
    }
    if (step != JsonGrammar::Step::Goes) {
        const bool isGood = step == JsonGrammar::Step::Closes && !m_grammar.IsBroken();
        return Take(!isGood ? Kind::Malformed : m_buffer[m_start] == '{' ? Kind::Request : Kind::Batch);
    }
    if (m_ended) {
        return Take(Kind::Malformed);
    }
    if (m_grammar.IsBroken()) {
        m_start = m_at;
        ReleaseConsumed();
    }
    return std::nullopt;
}

FramedText MessageScanner::Take(Kind kind) {
    const FramedText taken{kind, std::string_view(m_buffer).substr(m_start, m_at - m_start),
                           m_grammar.Members()};
    m_start = m_at;
    m_isInside = false;
    return taken;
}

bool MessageScanner::IsSkipped(char c) {
    if (c == kByteOrderMark[m_markBytes]) {
        m_markBytes = (m_markBytes + 1) % kByteOrderMark.size();
        return true;
    }
    return m_markBytes == 0 && (IsWhitespace(c) || c == '\0');
}

/// Capital letters and a space, as the first thing on the connection.
bool MessageScanner::EndsHttpMethod(char c) {
    if (!m_isFirstWord) {
        return false;
    }
    if (c >= 'A' && c <= 'Z') {
        ++m_wordLetters;
        return false;
    }
    m_isFirstWord = false;
    return c == ' ' && m_wordLetters >= kShortestHttpMethod;
}

bool MessageScanner::ReleaseTaken() {
    while (!m_isInside && !m_isRubbish && m_at < m_buffer.size() && IsSkipped(m_buffer[m_at])) {
        ++m_at;
    }
    if (m_isInside || m_at < m_buffer.size()) {
        return false;
    }
    m_start = m_at;
    ReleaseConsumed();
    return true;
}

void MessageScanner::ReleaseConsumed() {
    m_buffer.erase(0, m_start);
    m_at -= m_start;
    m_start = 0;
    // One long request must not keep its memory for as long as the client stays.
    if (m_buffer.empty() && m_buffer.capacity() > kKeptCapacity) {
        m_buffer.shrink_to_fit();
    }
}

}  // namespace Json::Rpc
