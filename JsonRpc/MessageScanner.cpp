#include "JsonRpc/MessageScanner.h"

#include <algorithm>

#include "JsonRpc/Limits.h"

namespace Json::Rpc {

namespace {

bool IsWhitespace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

bool Opens(char c) {
    return c == '{' || c == '[';
}

}  // namespace

void MessageScanner::Append(std::string_view bytes) {
    if (m_refused) {
        return;
    }
    ReleaseConsumed();
    m_buffer.append(bytes);
}

std::optional<FramedText> MessageScanner::Next() {
    if (m_depth == 0) {
        SkipWhitespace();
        if (m_start == m_buffer.size()) {
            ReleaseConsumed();
            return std::nullopt;
        }
        if (!Opens(m_buffer[m_start])) {
            return TakeRubbish();
        }
    }
    while (m_at < m_buffer.size()) {
        if (m_at - m_start == Limits::kRequestBytes) {
            return RefuseTooLong();
        }
        const Step step = Look(m_buffer[m_at++]);
        if (step != Step::Goes) {
            const bool isGood = step == Step::Completes && !m_isBroken;
            return Take(isGood ? FramedText::Kind::Complete : FramedText::Kind::Malformed, m_at);
        }
    }
    if (m_ended) {
        return Take(FramedText::Kind::Malformed, m_at);
    }
    return std::nullopt;
}

void MessageScanner::SkipWhitespace() {
    while (m_start < m_buffer.size() && IsWhitespace(m_buffer[m_start])) {
        ++m_start;
    }
    m_at = m_start;
}

void MessageScanner::ReleaseConsumed() {
    m_buffer.erase(0, m_start);
    m_at -= m_start;
    m_start = 0;
    // One long request must not keep its memory for as long as the client stays.
    if (m_buffer.empty() && m_buffer.capacity() > 2 * Limits::kReadBytesPerRound) {
        m_buffer.shrink_to_fit();
    }
}

MessageScanner::Step MessageScanner::Look(char c) {
    if (m_inString) {
        return LookInString(c);
    }
    switch (c) {
        case '"':
            m_inString = true;
            return Step::Goes;
        case '{':
        case '[':
            m_isBroken = ++m_depth > Limits::kNesting || m_isBroken;
            return Step::Goes;
        case '/':  // begins a comment, which the JSON reader would let pass in some places
            m_isBroken = true;
            return Step::Goes;
        case '}':
        case ']':
            return --m_depth == 0 ? Step::Completes : Step::Goes;
        default:
            return Step::Goes;
    }
}

MessageScanner::Step MessageScanner::LookInString(char c) {
    if (c == '\n') {
        return Step::Breaks;  // JSON has no line end in a string: a quote was lost, and only this line with
                              // it
    }
    if (m_escaped) {
        m_escaped = false;
    } else if (c == '\\') {
        m_escaped = true;
    } else if (c == '"') {
        m_inString = false;
    }
    return Step::Goes;
}

FramedText MessageScanner::Take(FramedText::Kind kind, std::size_t end) {
    const FramedText taken{kind, std::string_view(m_buffer).substr(m_start, end - m_start)};
    m_start = m_at = end;
    m_depth = 0;
    m_inString = m_escaped = m_isBroken = false;
    return taken;
}

FramedText MessageScanner::TakeRubbish() {
    const std::size_t lineEnd = std::min(m_buffer.find('\n', m_start), m_buffer.size());
    return Take(FramedText::Kind::Rubbish, lineEnd);
}

FramedText MessageScanner::RefuseTooLong() {
    m_refused = true;
    Take(FramedText::Kind::TooLong, m_buffer.size());
    ReleaseConsumed();
    return {FramedText::Kind::TooLong, {}};
}

}  // namespace Json::Rpc
