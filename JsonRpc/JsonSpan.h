// The parts of a JSON text, and where they end.
#pragma once

#include <cstddef>
#include <string_view>

namespace Json::Rpc {

inline bool IsWhitespace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

/// The texts are good JSON, as JsonGrammar has found; they are not looked at again. Any thread.

/// The end of the string that begins at `at`.
inline std::size_t EndOfString(std::string_view text, std::size_t at) {
    const char* next = text.data() + at + 1;
    while (*next != '"') {
        next += *next == '\\' ? 2 : 1;
    }
    return static_cast<std::size_t>(next + 1 - text.data());
}

/// The end of the value that begins at `at`, inside an array or an object; with the whitespace behind it.
inline std::size_t EndOfValue(std::string_view text, std::size_t at) {
    int depth = 0;
    while (depth > 0 || (text[at] != ',' && text[at] != ']' && text[at] != '}')) {
        const char c = text[at];
        depth += c == '{' || c == '[' ? 1 : c == '}' || c == ']' ? -1 : 0;
        at = c == '"' ? EndOfString(text, at) : at + 1;
    }
    return at;
}

/// The first byte from `at` on that is neither whitespace nor a separator between values.
inline std::size_t SkipSeparators(std::string_view text, std::size_t at) {
    while (IsWhitespace(text[at]) || text[at] == ',' || text[at] == ':') {
        ++at;
    }
    return at;
}

}  // namespace Json::Rpc
