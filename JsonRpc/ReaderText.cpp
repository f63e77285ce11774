#include "JsonRpc/ReaderText.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <sstream>

namespace Json::Rpc {

namespace {

constexpr std::size_t kEscapeLength = 6;  // \uXXXX

bool IsNumberByte(char c) {
    return (c >= '0' && c <= '9') || c == '-' || c == '+' || c == '.' || c == 'e' || c == 'E';
}

/// The code unit escaped at `at`, or -1 when nothing is.
int EscapedUnit(const std::string& text, std::size_t at) {
    if (text.compare(at, 2, "\\u") != 0) {
        return -1;
    }
    int unit = -1;
    std::from_chars(text.data() + at + 2, text.data() + at + kEscapeLength, unit, 16);
    return unit;
}

/// Returns where to go on behind the escape that begins at `at`.
std::size_t MendEscape(std::string& text, std::size_t at) {
    const int unit = EscapedUnit(text, at);
    if (unit < 0) {
        return at + 2;
    }
    if (unit >= 0xD800 && unit < 0xE000) {
        const int next = EscapedUnit(text, at + kEscapeLength);
        if (unit < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            return at + 2 * kEscapeLength;
        }
        text.replace(at, kEscapeLength, "\\ufffd");
    }
    return at + kEscapeLength;
}

std::size_t MendString(std::string& text, std::size_t at) {
    for (++at; text[at] != '"';) {
        at = text[at] == '\\' ? MendEscape(text, at) : at + 1;
    }
    return at + 1;
}

bool IsBeyondDouble(const char* begin, const char* end) {
    double value = 0;
    if (std::from_chars(begin, end, value).ec == std::errc()) {
        return false;
    }
    // Too small is no problem: the reader, which converts like this, takes it for 0.
    std::istringstream stream(std::string(begin, end));
    return !(stream >> value);
}

std::size_t MendNumber(std::string& text, std::size_t at) {
    const std::size_t end = static_cast<std::size_t>(
        std::find_if_not(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(), IsNumberByte) -
        text.begin());
    if (IsBeyondDouble(text.data() + at, text.data() + end)) {
        at += text[at] == '-' ? 1U : 0U;
        // The shortest such number, 1e309, has the room.
        text.replace(at, end - at, "1e" + std::string(end - at - 5, '0') + "308");
    }
    return end;
}

}  // namespace

void MakeReadable(std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
        if (text[at] == '"') {
            at = MendString(text, at);
        } else if (text[at] == '-' || (text[at] >= '0' && text[at] <= '9')) {
            at = MendNumber(text, at);
        } else {
            ++at;
        }
    }
}

}  // namespace Json::Rpc
