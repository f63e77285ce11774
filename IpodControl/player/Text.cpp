#include "IpodControl/player/Text.h"

#include <wchar.h>

#include <algorithm>
#include <array>
#include <cstdio>

namespace IpodControl::PlayerView {

namespace {

constexpr char32_t kReplacement = 0xFFFD;
/// More marks on one character are decoration that no name needs, and no terminal takes.
constexpr int kMostMarks = 3;

struct Range {
    char32_t first;
    char32_t last;
};
/// Controls, and what is invisible and changes how the rest of a line is shown.
constexpr std::array kHarmful{Range{0x0, 0x1F},       Range{0x7F, 0x9F},     Range{0xAD, 0xAD},
                              Range{0x61C, 0x61C},    Range{0x200B, 0x200F}, Range{0x2028, 0x202E},
                              Range{0x2060, 0x206F},  Range{0xFEFF, 0xFEFF}, Range{0xFFF9, 0xFFFB},
                              Range{0xE0000, 0xE0FFF}};

int ContinuationBytes(unsigned char lead) {
    if (lead < 0x80) {
        return 0;
    }
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 1;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 2;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 3 : -1;
}

/// Of a value spelled with so many continuation bytes: not too many of them, and no surrogate.
bool IsCharacter(char32_t value, int continuations) {
    const char32_t least = continuations == 3 ? 0x10000 : continuations == 2 ? 0x800 : 0x80;
    return value >= least && value <= 0x10FFFF && (value < 0xD800 || value > 0xDFFF);
}

/// -1: the terminal cannot show it.
int WidthOf(char32_t character, Charset charset) {
    if (character < 0x7F) {
        return 1;
    }
    if (charset == Charset::Utf8) {
        return wcwidth(static_cast<wchar_t>(character));
    }
    const bool isAccent = character >= 0x300 && character <= 0x36F;
    return isAccent ? 0 : -1;
}

Glyph Stand(Charset charset) {
    return {charset == Charset::Ascii ? "?" : ToUtf8(kReplacement), 1};
}

}  // namespace

char32_t NextCharacter(std::string_view text, std::size_t& position) {
    const auto lead = static_cast<unsigned char>(text[position++]);
    const int continuations = ContinuationBytes(lead);
    if (continuations <= 0) {
        return continuations == 0 ? lead : kReplacement;
    }
    char32_t character = lead & (0x3FU >> continuations);
    std::size_t end = position;
    for (int i = 0; i < continuations; ++i, ++end) {
        const auto next = end < text.size() ? static_cast<unsigned char>(text[end]) : 0U;
        if ((next & 0xC0U) != 0x80) {
            return kReplacement;
        }
        character = (character << 6U) | (next & 0x3FU);
    }
    if (!IsCharacter(character, continuations)) {
        return kReplacement;
    }
    position = end;
    return character;
}

std::string ToUtf8(char32_t character) {
    const auto byte = [](char32_t bits) { return static_cast<char>(bits); };
    const auto low = [&](unsigned shift) { return byte(0x80U | ((character >> shift) & 0x3FU)); };
    if (character < 0x80) {
        return {byte(character)};
    }
    if (character < 0x800) {
        return {byte(0xC0U | (character >> 6U)), low(0)};
    }
    if (character < 0x10000) {
        return {byte(0xE0U | (character >> 12U)), low(6), low(0)};
    }
    return {byte(0xF0U | (character >> 18U)), low(12), low(6), low(0)};
}

bool IsHarmless(char32_t character) {
    return std::none_of(kHarmful.begin(), kHarmful.end(), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

std::vector<Glyph> Glyphs(std::string_view text, Charset charset) {
    std::vector<Glyph> glyphs;
    int marks = 0;
    for (std::size_t position = 0; position < text.size();) {
        const char32_t character = NextCharacter(text, position);
        if (!IsHarmless(character)) {
            continue;
        }
        const int width = WidthOf(character, charset);
        if (width == 0) {
            if (!glyphs.empty() && charset == Charset::Utf8 && ++marks <= kMostMarks) {
                glyphs.back().text += ToUtf8(character);
            }
            continue;
        }
        marks = 0;
        glyphs.push_back(width < 0 ? Stand(charset) : Glyph{ToUtf8(character), width});
    }
    return glyphs;
}

int Columns(const std::vector<Glyph>& glyphs) {
    int columns = 0;
    for (const Glyph& glyph : glyphs) {
        columns += glyph.columns;
    }
    return columns;
}

std::vector<Glyph> Fit(std::string_view text, int columns, Charset charset) {
    std::vector<Glyph> glyphs = Glyphs(text, charset);
    int used = Columns(glyphs);
    if (used <= columns) {
        return glyphs;
    }
    while (!glyphs.empty() && used > columns - 1) {
        used -= glyphs.back().columns;
        glyphs.pop_back();
    }
    if (columns > 0) {
        glyphs.push_back({charset == Charset::Ascii ? "~" : "…", 1});
    }
    return glyphs;
}

std::string Grouped(long long number) {
    std::string digits = std::to_string(number);
    const std::size_t first = number < 0 ? 1 : 0;
    for (std::size_t end = digits.size(); end > first + 3;) {
        end -= 3;
        digits.insert(end, 1, ',');
    }
    return digits;
}

std::string ClockText(long long milliseconds) {
    const long long seconds = std::max(milliseconds, 0LL) / 1000;
    std::array<char, 48> text{};
    if (seconds >= 3600) {
        std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", seconds / 3600, seconds / 60 % 60,
                      seconds % 60);
    } else {
        std::snprintf(text.data(), text.size(), "%lld:%02lld", seconds / 60, seconds % 60);
    }
    return text.data();
}

}  // namespace IpodControl::PlayerView
