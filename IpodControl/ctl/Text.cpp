#include "IpodControl/ctl/Text.h"

#include <locale.h>
#include <wchar.h>
#include <wctype.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

namespace IpodControl {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Takes one character off the front of `text`, which is not empty; what is no UTF-8 goes byte by byte.
char32_t TakeCharacter(std::string_view& text) {
    const auto byte = [&text](std::size_t at) { return static_cast<unsigned char>(text[at]); };
    const unsigned char first = byte(0);
    const std::size_t length = first < 0x80   ? 1
                               : first < 0xC2 ? 0
                               : first < 0xE0 ? 2
                               : first < 0xF0 ? 3
                               : first < 0xF5 ? 4
                                              : 0;
    char32_t character = length < 2 ? first : first & (0x7FU >> length);
    bool isGood = length > 0 && length <= text.size();
    for (std::size_t i = 1; isGood && i < length; ++i) {
        isGood = (byte(i) & 0xC0) == 0x80;
        character = character << 6 | (byte(i) & 0x3F);
    }
    constexpr std::array<char32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
    isGood = isGood && character >= kLeast[length] && character <= 0x10FFFF &&
             (character < 0xD800 || character > 0xDFFF);
    text.remove_prefix(isGood ? length : 1);
    return isGood ? character : kReplacement;
}

void Append(std::string& text, char32_t character) {
    const auto put = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) {
        put(character);
        return;
    }
    if (character < 0x800) {
        put(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            put(0xE0 | character >> 12);
        } else {
            put(0xF0 | character >> 18);
            put(0x80 | (character >> 12 & 0x3F));
        }
        put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

bool IsControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

/// Changes of the writing direction, and line ends beyond ASCII.
bool MisleadsReaders(char32_t character) {
    return (character >= 0x2028 && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069) ||
           character == 0x200E || character == 0x200F || character == 0x061C;
}

/// Lets the C library's tables speak of Unicode, whatever the user's locale is.
locale_t Unicode() {
    static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    return locale;
}

std::size_t CellsOf(char32_t character) {
    const locale_t unicode = Unicode();
    if (character < 0x7F || unicode == nullptr) {
        return 1;
    }
    const locale_t before = uselocale(unicode);
    const int cells = wcwidth(static_cast<wchar_t>(character));
    uselocale(before);
    return cells < 0 ? 1 : static_cast<std::size_t>(cells);
}

std::u32string Characters(std::string_view text) {
    std::u32string characters;
    while (!text.empty()) {
        characters += TakeCharacter(text);
    }
    return characters;
}

}  // namespace

std::string Harmless(std::string_view text) {
    std::string harmless;
    harmless.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        Append(harmless, IsControl(character) || MisleadsReaders(character) ? kReplacement : character);
    }
    return harmless;
}

std::string HarmlessJson(std::string_view line) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    std::string harmless;
    harmless.reserve(line.size());
    while (!line.empty()) {
        const char32_t character = TakeCharacter(line);
        if (!IsControl(character) && !MisleadsReaders(character)) {
            Append(harmless, character);
            continue;
        }
        harmless += "\\u";
        for (const unsigned shift : {12U, 8U, 4U, 0U}) {
            harmless += kDigits[character >> shift & 0xF];
        }
    }
    return harmless;
}

std::size_t DisplayWidth(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        width += CellsOf(TakeCharacter(text));
    }
    return width;
}

std::string Padded(std::string_view text, std::size_t width) {
    const std::size_t cells = DisplayWidth(text);
    return std::string(text).append(width > cells ? width - cells : 0, ' ');
}

std::string Shortened(std::string_view text, std::size_t width) {
    std::string_view rest = text;
    std::size_t cells = 0;
    while (!rest.empty()) {
        std::string_view behind = rest;
        cells += CellsOf(TakeCharacter(behind));
        if (cells > width) {
            break;
        }
        rest = behind;
    }
    return std::string(text.substr(0, text.size() - rest.size()));
}

std::string Folded(std::string_view text) {
    const locale_t unicode = Unicode();
    std::string folded;
    folded.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        const bool isAscii = character < 0x80 || unicode == nullptr;
        Append(folded, isAscii ? (character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character)
                               : static_cast<char32_t>(towlower_l(static_cast<wint_t>(character), unicode)));
    }
    return folded;
}

std::size_t EditDistance(std::string_view left, std::string_view right) {
    const std::u32string from = Characters(left);
    const std::u32string to = Characters(right);
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0]++;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t changed = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string MinutesAndSeconds(std::int64_t milliseconds) {
    const std::int64_t seconds = std::max<std::int64_t>(milliseconds, 0) / 1000;
    const std::string rest = std::to_string(seconds % 60);
    return std::to_string(seconds / 60) + (rest.size() < 2 ? ":0" : ":") + rest;
}

}  // namespace IpodControl
