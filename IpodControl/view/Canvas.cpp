#include "IpodControl/view/Canvas.h"

#include <wchar.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "IpodControl/DisplayText.h"
#include "ServiceUtil/Utf8.h"

namespace IpodControl::PlayerView {

namespace {

/// One character with its combining marks, as the terminal takes it.
struct Glyph {
    std::string text;
    int columns = 1;  ///< 1 or 2
};

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

std::vector<Glyph> GlyphsOf(std::string_view text, Charset charset) {
    // More marks on one character are decoration that no name needs, and no terminal takes.
    constexpr int kMostMarks = 3;
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
        if (width < 0) {
            glyphs.push_back({charset == Charset::Ascii ? "?" : "\uFFFD"});
        } else {
            AppendUtf8(glyphs.emplace_back(Glyph{"", width}).text, character);
        }
    }
    return glyphs;
}

int ColumnsOf(const std::vector<Glyph>& glyphs) {
    return std::accumulate(glyphs.begin(), glyphs.end(), 0,
                           [](int columns, const Glyph& glyph) { return columns + glyph.columns; });
}

}  // namespace

Canvas::Canvas(Size size, Charset charset)
    : m_size{std::max(size.rows, 0), std::max(size.columns, 0)},
      m_charset(charset),
      m_cells(Index(m_size.rows, 0)) {}

int Canvas::Write(int row, int column, int width, std::string_view text, Style style) {
    if (!IsInside(row, column)) {
        return 0;
    }
    std::vector<Glyph> glyphs = GlyphsOf(text, m_charset);
    const int room = std::min(width, m_size.columns - column);
    if (int used = ColumnsOf(glyphs); used > room) {
        for (; !glyphs.empty() && used >= room; glyphs.pop_back()) {
            used -= glyphs.back().columns;
        }
        glyphs.resize(room > 0 ? glyphs.size() + 1 : 0, {m_charset == Charset::Ascii ? "~" : "…"});
    }
    int end = column;
    for (const Glyph& glyph : glyphs) {
        Set(row, end, {glyph.text, style});
        if (glyph.columns == 2) {
            m_cells[Index(row, end + 1)] = {"", style};
        }
        end += glyph.columns;
    }
    return end - column;
}

int Canvas::Columns(std::string_view text) const {
    return ColumnsOf(GlyphsOf(text, m_charset));
}

void Canvas::Put(int row, int column, std::string_view text, Style style) {
    if (IsInside(row, column)) {
        Set(row, column, {std::string(text), style});
    }
}

/// Of a glyph of two columns that it covers half of, the other half is blank.
void Canvas::Set(int row, int column, Cell cell) {
    if (At(row, column).text.empty() && column > 0) {
        m_cells[Index(row, column - 1)].text = " ";
    }
    if (column + 1 < m_size.columns && At(row, column + 1).text.empty()) {
        m_cells[Index(row, column + 1)].text = " ";
    }
    m_cells[Index(row, column)] = std::move(cell);
}

void Canvas::Fill(int row, int column, int width, Style style) {
    for (int i = 0; i < width; ++i) {
        Put(row, column + i, " ", style);
    }
}

}  // namespace IpodControl::PlayerView
