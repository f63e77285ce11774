// Random errors in good text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace Fuzz {

inline std::size_t Below(std::mt19937& random, std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

/// Up to four changes: bytes put in, taken out, replaced or repeated.
inline std::string Mutate(std::string text, std::mt19937& random) {
    constexpr std::string_view kBytes = "{}[]\"=\\,:.# \n\r\t0919999999-aeruz~<>!\x01\x7f\xc3\xff";
    for (std::size_t changes = Below(random, 5); changes > 0 && !text.empty(); --changes) {
        const std::size_t at = Below(random, text.size());
        const char byte = kBytes[Below(random, kBytes.size())];
        switch (Below(random, 4)) {
            case 0:
                text.insert(at, 1, byte);
                break;
            case 1:
                text.erase(at, 1 + Below(random, 8));
                break;
            case 2:
                text[at] = byte;
                break;
            default:
                text.insert(at, text.substr(at, Below(random, 40)));
        }
    }
    return text;
}

}  // namespace Fuzz
