#include "IpodControl/Base64.h"

#include <cstdint>

namespace IpodControl {

namespace {

int Digit(char c) {
    if (c >= 'A' && c <= 'Z') {
        return c - 'A';
    }
    if (c >= 'a' && c <= 'z') {
        return c - 'a' + 26;
    }
    if (c >= '0' && c <= '9') {
        return c - '0' + 52;
    }
    return c == '+' ? 62 : c == '/' ? 63 : -1;
}

}  // namespace

std::optional<std::string> DecodeBase64(std::string_view text) {
    while (!text.empty() && text.back() == '=') {
        text.remove_suffix(1);
    }
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    std::uint32_t bits = 0;
    unsigned count = 0;
    for (const char c : text) {
        const int digit = Digit(c);
        if (digit < 0) {
            return std::nullopt;
        }
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return bytes;
}

}  // namespace IpodControl
