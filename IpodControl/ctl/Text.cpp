#include "IpodControl/ctl/Text.h"

#include <locale.h>
#include <wchar.h>
#include <wctype.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "IpodControl/Utf8.h"

namespace IpodControl {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

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

void AppendEscaped(std::string& text, char32_t unit) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    text += "\\u";
    for (const unsigned shift : {12U, 8U, 4U, 0U}) {
        text += kDigits[unit >> shift & 0xF];
    }
}

}  // namespace

std::string Harmless(std::string_view text) {
    std::string harmless;
    harmless.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        AppendUtf8(harmless, IsHarmless(character) ? character : kReplacement);
    }
    return harmless;
}

std::string HarmlessJson(std::string_view line) {
    std::string harmless;
    harmless.reserve(line.size());
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
        AppendUtf8(folded, isAscii
                               ? (character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character)
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

}  // namespace IpodControl
