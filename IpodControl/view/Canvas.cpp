#include "IpodControl/view/Canvas.h"

#include <algorithm>
#include <utility>

namespace IpodControl::PlayerView {

Canvas::Canvas(Size size, Charset charset)
    : m_size{std::max(size.rows, 0), std::max(size.columns, 0)},
      m_charset(charset),
      m_cells(Index(m_size.rows, 0)) {}

int Canvas::Write(int row, int column, int width, std::string_view text, Style style) {
    if (!IsInside(row, column)) {
        return 0;
    }
    int end = column;
    for (const Glyph& glyph : Fit(text, std::min(width, m_size.columns - column), m_charset)) {
        Set(row, end, {glyph.text, style});
        if (glyph.columns == 2) {
            m_cells[Index(row, end + 1)] = {"", style};
        }
        end += glyph.columns;
    }
    return end - column;
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

std::string Canvas::Row(int row) const {
    std::string text;
    for (int column = 0; column < m_size.columns; ++column) {
        text += At(row, column).text;
    }
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

}  // namespace IpodControl::PlayerView
