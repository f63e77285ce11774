// Texts in the fixed fields of the interface's records.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>

#include "ServiceUtil/Utf8.h"

namespace DeviceSimulator {

/// Fills `field` with `text`, cut to leave room for the NUL but not inside a character, and zeros behind it.
inline void CopyText(std::span<char> field, std::string_view text) {
    if (!field.empty()) {
        const std::string_view cut = CutUtf8(text, field.size() - 1);
        std::fill(std::copy(cut.begin(), cut.end(), field.begin()), field.end(), '\0');
    }
}

}  // namespace DeviceSimulator
