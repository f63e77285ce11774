#include "JsonRpc/JsonGrammar.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "JsonRpc/JsonSpan.h"

namespace Json::Rpc {

namespace {

constexpr std::size_t kKeptBrackets = 4096;

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The end of what stands for itself inside a string.
std::size_t EndOfPlain(std::string_view bytes, std::size_t at) {
    const auto* const end = bytes.data() + bytes.size();
    const auto* const found = std::find_if(bytes.data() + at, end, [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
    });
    return static_cast<std::size_t>(found - bytes.data());
}

bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

}  // namespace

void JsonGrammar::Restart() {
    std::vector<bool> brackets = std::move(m_isObject);
    *this = JsonGrammar(m_nesting, m_mostValues);
    if (brackets.capacity() <= kKeptBrackets) {
        brackets.clear();
        m_isObject = std::move(brackets);
    }
}

JsonGrammar::Step JsonGrammar::Follow(std::string_view bytes, std::size_t& at) {
    while (at < bytes.size()) {
        if (m_state == State::String && !m_isBroken) {
            at = EndOfPlain(bytes, at);  // where most of a text stands
            if (at == bytes.size()) {
                break;
            }
        }
        const Step step = Look(bytes[at++]);
        if (step != Step::Goes) {
            return step;
        }
    }
    return Step::Goes;
}

JsonGrammar::Step JsonGrammar::Look(char c) {
    if (m_isBroken) {
        return FollowBroken(c);
    }
    Step step = Step::Goes;
    if (Accepts(c, step)) {
        return step;
    }
    m_isBroken = true;
    m_isEscaped = m_state == State::Escape;
    m_isInString = m_isEscaped || m_state == State::String || m_state == State::HexDigits;
    return FollowBroken(c);
}

JsonGrammar::Step JsonGrammar::FollowBroken(char c) {
    if (!m_isInString) {
        m_isInString = c == '"';
        if (c == '{' || c == '[') {
            Open(c);
        }
        return c == '}' || c == ']' ? Close(c) : Step::Goes;
    }
    if (c == '\n') {
        return Step::CannotClose;  // a quote was lost; what follows would be read inside out
    }
    m_isInString = m_isEscaped || c != '"';
    m_isEscaped = !m_isEscaped && c == '\\';
    return Step::Goes;
}

void JsonGrammar::Open(char c) {
    m_isObject.push_back(c == '{');
    m_isBroken = m_isBroken || m_isObject.size() > m_nesting;
}

JsonGrammar::Step JsonGrammar::Close(char c) {
    if (m_isObject.back() != (c == '}')) {
        return Step::CannotClose;
    }
    m_isObject.pop_back();
    return m_isObject.empty() ? Step::Closes : Step::Goes;
}

bool JsonGrammar::Go(State state) {
    m_state = state;
    return true;
}

/// False where the text is no JSON; else what `step` the byte is, if it is one.
bool JsonGrammar::Accepts(char c, Step& step) {
    switch (m_state) {
        case State::String:
            return AcceptsInString(c);
        case State::Escape:
            return AcceptsInEscape(c);
        case State::HexDigits:
            return IsHexDigit(c) && (--m_hexDigitsLeft > 0 || Go(State::String));
        case State::Literal:
            return c == *m_literalRest && (*++m_literalRest != '\0' || Go(State::AfterValue));
        case State::Value:
        case State::FirstElement:
        case State::FirstKey:
        case State::Key:
        case State::Colon:
        case State::AfterValue:
            return AcceptsBetween(c, step);
        default:
            return AcceptsInNumber(c, step);
    }
}

bool JsonGrammar::AcceptsBetween(char c, Step& step) {
    if (IsWhitespace(c)) {
        return true;
    }
    const bool closes = c == '}' || c == ']';
    switch (m_state) {
        case State::FirstElement:
            if (c != ']') {
                return BeginsValue(c, step);
            }
            break;
        case State::Value:
            return BeginsValue(c, step);
        case State::FirstKey:
            if (c == '}') {
                break;
            }
            [[fallthrough]];
        case State::Key:
            m_isKey = true;
            return c == '"' && Go(State::String);
        case State::Colon:
            return c == ':' && Go(State::Value);
        default:
            if (!closes) {
                return c == ',' && Go(m_isObject.back() ? State::Key : State::Value);
            }
            break;
    }
    step = Close(c);
    return Go(State::AfterValue);
}

bool JsonGrammar::BeginsValue(char c, Step& step) {
    m_members += m_isObject.size() == 1 ? 1U : 0U;
    if (!GoIntoValue(c)) {
        return false;
    }
    if (++m_values > m_mostValues) {
        step = Step::TooMany;
    }
    return true;
}

bool JsonGrammar::GoIntoValue(char c) {
    switch (c) {
        case '"':
            m_isKey = false;
            return Go(State::String);
        case '{':
        case '[':
            Open(c);
            return Go(c == '{' ? State::FirstKey : State::FirstElement);
        case '-':
            return Go(State::Minus);
        case 't':
            m_literalRest = "rue";
            return Go(State::Literal);
        case 'f':
            m_literalRest = "alse";
            return Go(State::Literal);
        case 'n':
            m_literalRest = "ull";
            return Go(State::Literal);
        default:
            return IsDigit(c) && Go(c == '0' ? State::Zero : State::Integer);
    }
}

bool JsonGrammar::AcceptsInString(char c) {
    if (c == '"') {
        return Go(m_isKey ? State::Colon : State::AfterValue);
    }
    if (c == '\\') {
        return Go(State::Escape);
    }
    return static_cast<unsigned char>(c) >= 0x20;
}

bool JsonGrammar::AcceptsInEscape(char c) {
    if (c == 'u') {
        m_hexDigitsLeft = 4;
        return Go(State::HexDigits);
    }
    return c != '\0' && std::strchr("\"\\/bfnrt", c) != nullptr && Go(State::String);
}

bool JsonGrammar::AcceptsInNumber(char c, Step& step) {
    const bool isExponent = c == 'e' || c == 'E';
    switch (m_state) {
        case State::Minus:
            return IsDigit(c) && Go(c == '0' ? State::Zero : State::Integer);
        case State::Point:
            return IsDigit(c) && Go(State::Fraction);
        case State::Exponent:
            if (c == '+' || c == '-') {
                return Go(State::ExponentSign);
            }
            [[fallthrough]];
        case State::ExponentSign:
            return IsDigit(c) && Go(State::ExponentDigits);
        case State::Zero:
            if (c == '.' || isExponent) {
                return Go(c == '.' ? State::Point : State::Exponent);
            }
            break;
        case State::Integer:
            if (IsDigit(c)) {
                return true;
            }
            if (c == '.' || isExponent) {
                return Go(c == '.' ? State::Point : State::Exponent);
            }
            break;
        default:
            if (IsDigit(c)) {
                return true;
            }
            if (m_state == State::Fraction && isExponent) {
                return Go(State::Exponent);
            }
            break;
    }
    m_state = State::AfterValue;
    return AcceptsBetween(c, step);
}

}  // namespace Json::Rpc
