#include "IpodControl/DisplayText.h"

#include <glib.h>

#include <algorithm>
#include <array>

#include "ServiceUtil/Utf8.h"

namespace IpodControl {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

struct Range {
    char32_t first;
    char32_t last;
};
constexpr std::array kHarmful{Range{0x0, 0x1F},       Range{0x7F, 0x9F},     Range{0xAD, 0xAD},
                              Range{0x61C, 0x61C},    Range{0x200B, 0x200F}, Range{0x2028, 0x202E},
                              Range{0x2060, 0x206F},  Range{0xFEFF, 0xFEFF}, Range{0xFFF9, 0xFFFB},
                              Range{0xE0000, 0xE0FFF}};

std::size_t CellsOf(char32_t character) {
    if (g_unichar_iszerowidth(character)) {
        return 0;
    }
    return g_unichar_iswide(character) ? 2 : 1;
}

void AppendEscaped(std::string& text, char32_t unit) {
    std::array<char, 8> escaped{};
    g_snprintf(escaped.data(), escaped.size(), "\\u%04x", static_cast<unsigned>(unit));
    text += escaped.data();
}

}  // namespace

bool IsHarmless(char32_t character) {
    return std::none_of(kHarmful.begin(), kHarmful.end(), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

std::string Harmless(std::string_view text) {
    std::string harmless;
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        AppendUtf8(harmless, IsHarmless(character) ? character : kReplacement);
    }
    return harmless;
}

std::string HarmlessJson(std::string_view line) {
    std::string harmless;
    while (!line.empty()) {
        const char32_t character = TakeCharacter(line);
        if (IsHarmless(character)) {
            AppendUtf8(harmless, character);
        } else if (character < 0x10000) {
            AppendEscaped(harmless, character);
        } else {
            AppendEscaped(harmless, 0xD7C0 + (character >> 10U));
            AppendEscaped(harmless, 0xDC00 + (character & 0x3FFU));
        }
    }
    return harmless;
}

std::string ClockText(std::int64_t milliseconds) {
    const long long seconds = std::max<std::int64_t>(milliseconds, 0) / 1000;
    std::array<char, 40> text{};
    const std::string hours = seconds < 3600 ? "" : std::to_string(seconds / 3600) + ':';
    g_snprintf(text.data(), text.size(), hours.empty() ? "%lld:%02lld" : "%02lld:%02lld", seconds / 60 % 60,
               seconds % 60);
    return hours + text.data();
}

std::string Grouped(std::int64_t number) {
    std::string digits = std::to_string(number);
    for (std::size_t end = digits.size(); end > 3;) {
        end -= 3;
        digits.insert(end, 1, ',');
    }
    return digits;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        width += CellsOf(TakeCharacter(text));
    }
    return width;
}

std::string Shortened(std::string_view text, std::size_t width) {
    std::string_view rest = text;
    for (std::size_t cells = 0; !rest.empty();) {
        std::string_view behind = rest;
        cells += CellsOf(TakeCharacter(behind));
        if (cells > width) {
            break;
        }
        rest = behind;
    }
    return std::string(text.substr(0, text.size() - rest.size()));
}

}  // namespace IpodControl
