#include "IpodControl/Utf8.h"

#include <algorithm>
#include <array>

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

/// -1: it begins no character.
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

}  // namespace

char32_t TakeCharacter(std::string_view& text) {
    const auto lead = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    const int continuations = ContinuationBytes(lead);
    if (continuations <= 0) {
        return continuations == 0 ? lead : kReplacement;
    }
    char32_t character = lead & (0x3FU >> continuations);
    std::string_view rest = text;
    for (int i = 0; i < continuations; ++i, rest.remove_prefix(1)) {
        const auto next = rest.empty() ? 0U : static_cast<unsigned char>(rest.front());
        if ((next & 0xC0U) != 0x80) {
            return kReplacement;
        }
        character = (character << 6U) | (next & 0x3FU);
    }
    if (!IsCharacter(character, continuations)) {
        return kReplacement;
    }
    text = rest;
    return character;
}

void AppendUtf8(std::string& text, char32_t character) {
    const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        put(character);
        return;
    }
    if (character < 0x800) {
        put(0xC0U | character >> 6U);
    } else {
        if (character < 0x10000) {
            put(0xE0U | character >> 12U);
        } else {
            put(0xF0U | character >> 18U);
            put(0x80U | (character >> 12U & 0x3FU));
        }
        put(0x80U | (character >> 6U & 0x3FU));
    }
    put(0x80U | (character & 0x3FU));
}

bool IsHarmless(char32_t character) {
    return std::none_of(kHarmful.begin(), kHarmful.end(), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

}  // namespace IpodControl
