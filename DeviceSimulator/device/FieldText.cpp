#include "DeviceSimulator/device/FieldText.h"

#include <algorithm>

namespace DeviceSimulator {

namespace {

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

}  // namespace

std::string_view CutText(std::string_view text, std::size_t room) {
    if (text.size() <= room) {
        return text;
    }
    constexpr std::size_t kLongestCharacter = 4;
    for (std::size_t back = 0; back < kLongestCharacter && back <= room; ++back) {
        if (!IsContinuation(text[room - back])) {
            return text.substr(0, room - back);
        }
    }
    return text.substr(0, room);
}

void CopyText(std::span<char> field, std::string_view text) {
    if (field.empty()) {
        return;
    }
    const std::string_view cut = CutText(text, field.size() - 1);
    const auto end = std::copy(cut.begin(), cut.end(), field.begin());
    std::fill(end, field.end(), '\0');
}

}  // namespace DeviceSimulator
