#include "IpodControl/view/Glyphs.h"

#include <wchar.h>

#include "IpodControl/DisplayText.h"
#include "ServiceUtil/Utf8.h"

namespace IpodControl::PlayerView {

namespace {

/// More marks on one character are decoration that no name needs, and no terminal takes.
constexpr int kMostMarks = 3;

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
    return {charset == Charset::Ascii ? "?" : "\uFFFD", 1};
}

}  // namespace

std::vector<Glyph> Glyphs(std::string_view text, Charset charset) {
    std::vector<Glyph> glyphs;
    int marks = 0;
    while (!text.empty()) {
        const char32_t character = TakeCharacter(text);
        if (!IsHarmless(character)) {
            continue;
        }
        const int width = WidthOf(character, charset);
        if (width == 0) {
            if (!glyphs.empty() && charset == Charset::Utf8 && ++marks <= kMostMarks) {
                AppendUtf8(glyphs.back().text, character);
            }
            continue;
        }
        marks = 0;
        glyphs.push_back(width < 0 ? Stand(charset) : Glyph{"", width});
        if (width > 0) {
            AppendUtf8(glyphs.back().text, character);
        }
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

}  // namespace IpodControl::PlayerView
