#include "ScenarioRunner/LineReader.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <utility>

namespace ScenarioRunner {

namespace {

constexpr std::string_view kBlanks = " \t\r";

bool IsNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_.-[]").find(c) != std::string_view::npos;
}

}  // namespace

Json::Value ParseValue(std::string_view text) {
    Json::Value value;
    return ParseJson(text, value) ? value : Json::Value(std::string(text));
}

std::optional<std::chrono::milliseconds> ParseDuration(std::string_view text) {
    constexpr std::pair<std::string_view, double> kUnits[] = {{"ms", 1}, {"s", 1000}, {"min", 60'000}};
    constexpr double kHourMs = 3'600'000;
    double number = 0;
    const auto [end, failure] =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    const std::string_view unit = text.substr(static_cast<std::size_t>(end - text.data()));
    for (const auto& [word, factor] : kUnits) {
        if (failure == std::errc{} && unit == word && number >= 0 && number * factor <= kHourMs) {
            return std::chrono::milliseconds{static_cast<std::int64_t>(number * factor)};
        }
    }
    return std::nullopt;
}

bool LineReader::IsAtEnd() {
    m_at = std::min(m_line.find_first_not_of(kBlanks, m_at), m_line.size());
    return !m_error.empty() || m_at == m_line.size() || m_line[m_at] == '#';
}

std::size_t LineReader::Column() {
    IsAtEnd();
    return m_at + 1;
}

std::string_view LineReader::Peek() {
    if (IsAtEnd()) {
        return {};
    }
    return m_line.substr(m_at, m_line.find_first_of(kBlanks, m_at) - m_at);
}

bool LineReader::Take(std::string_view word) {
    const bool isNext = Peek() == word;
    m_at += isNext ? word.size() : 0;
    return isNext;
}

std::string LineReader::Name(std::string_view what) {
    const std::string_view name = NameAhead();
    if (name.empty()) {
        Complain(std::string(what) + " is missing");
    }
    m_at += name.size();
    return std::string(name);
}

Condition LineReader::Pair(bool isCondition) {
    Condition pair;
    const std::size_t begin = m_at = Column() - 1;
    pair.path = NameAhead();
    m_at += pair.path.size();
    const auto compare = pair.path.empty() ? std::nullopt : TakeOperator();
    if (compare) {
        pair.compare = *compare;
    } else if (isCondition) {
        pair.path.clear();
        m_at = begin;
    } else {
        Complain("a member is written name=value", begin + 1);
    }
    if (!isCondition && pair.compare != Operator::Equal) {
        Complain("a member is given by =", begin + 1);
    }
    // A value follows its sign at once.
    if (compare && (m_at == m_line.size() || kBlanks.find(m_line[m_at]) != std::string_view::npos)) {
        Complain("the value is missing");
    }
    pair.value = Value();
    return pair;
}

Json::Value LineReader::Value() {
    Json::Value value;
    if (!m_error.empty()) {
        return value;
    }
    const bool isJson =
        m_at < m_line.size() && std::string_view("\"[{").find(m_line[m_at]) != std::string_view::npos;
    const std::size_t end = isJson ? JsonEnd() : std::min(m_line.find_first_of(kBlanks, m_at), m_line.size());
    const std::string_view text = m_line.substr(m_at, end - m_at);
    if (text.empty()) {
        Complain("the value is missing");
    } else if (isJson && !ParseJson(text, value)) {
        Complain("this is no JSON value");
    } else if (!isJson) {
        value = ParseValue(text);
    }
    m_at = end;
    return value;
}

std::chrono::milliseconds LineReader::Duration() {
    const std::string_view text = Peek();
    const auto duration = ParseDuration(text);
    if (!duration) {
        Complain("a time such as 500ms or 2s, at most an hour, is missing");
    }
    m_at += text.size();
    return duration.value_or(std::chrono::milliseconds{0});
}

std::size_t LineReader::Count() {
    constexpr std::uint32_t kMost = 1'000'000;
    const std::string_view text = Peek();
    std::uint32_t count = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (failure != std::errc{} || end != text.data() + text.size() || count > kMost) {
        Complain("a number from 0 to 1000000 is missing");
    }
    m_at += text.size();
    return count;
}

void LineReader::Complain(std::string text, std::optional<std::size_t> column) {
    if (m_error.empty()) {
        m_errorColumn = column.value_or(m_at + 1);
        m_error = std::move(text);
    }
}

std::string_view LineReader::NameAhead() {
    if (IsAtEnd()) {
        return {};
    }
    const auto rest = m_line.substr(m_at);
    const auto end = std::find_if_not(rest.begin(), rest.end(), IsNameCharacter);
    return rest.substr(0, static_cast<std::size_t>(end - rest.begin()));
}

std::optional<Operator> LineReader::TakeOperator() {
    // The longer signs first.
    constexpr std::pair<std::string_view, Operator> kSigns[] = {
        {"!=", Operator::Unequal}, {"<=", Operator::LessOrEqual}, {">=", Operator::GreaterOrEqual},
        {"=", Operator::Equal},    {"<", Operator::Less},         {">", Operator::Greater},
        {"~", Operator::Contains}};
    for (const auto& [sign, compare] : kSigns) {
        if (m_line.substr(m_at, sign.size()) == sign) {
            m_at += sign.size();
            return compare;
        }
    }
    return std::nullopt;
}

std::size_t LineReader::JsonEnd() const {
    std::size_t depth = 0;
    bool isText = false;
    for (std::size_t at = m_at; at < m_line.size(); ++at) {
        const char c = m_line[at];
        if (isText && c == '\\') {
            ++at;
        } else if (c == '"') {
            isText = !isText;
        } else if (!isText && (c == '[' || c == '{')) {
            ++depth;
        } else if (!isText && (c == ']' || c == '}')) {
            --depth;
        }
        if (!isText && depth == 0 && at < m_line.size()) {
            return at + 1;
        }
    }
    return m_line.size();
}

}  // namespace ScenarioRunner
