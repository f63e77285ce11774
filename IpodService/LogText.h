// Texts of the device on their way into the log.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

/// `text` with '?' for every control byte: a name must not end lines, begin entries or drive a terminal.
inline std::string LogText(std::string_view text) {
    std::string safe(text);
    std::replace_if(
        safe.begin(), safe.end(), [](unsigned char byte) { return byte < 0x20 || byte == 0x7F; }, '?');
    return safe;
}
