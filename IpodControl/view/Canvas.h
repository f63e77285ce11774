// A window of cells, drawn by the view and shown by the terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace IpodControl::PlayerView {

enum class Charset { Ascii, Utf8 };

struct Style {
    /// Of the palette of 256 colours; -1 is the terminal's own.
    int foreground = -1;
    int background = -1;
    bool isBold = false;
    bool isDim = false;
    bool isReverse = false;
    bool operator==(const Style&) const = default;
};

struct Cell {
    std::string text = " ";  ///< empty behind a glyph of two columns
    Style style;
    bool operator==(const Cell&) const = default;
};

struct Size {
    int rows = 0;
    int columns = 0;
    bool operator==(const Size&) const = default;
};

class Canvas {
  public:
    explicit Canvas(Size size, Charset charset = Charset::Utf8);

    Size Extent() const { return m_size; }
    Charset Characters() const { return m_charset; }

    /// Draws `text` from there on, cut at `width` columns and at the edge, where it then ends in "…", and
    /// gives back the columns it takes. Positions outside are left out. Control characters, and those that
    /// turn the direction of a line, are left out; what is no UTF-8 is replaced, and so is what the terminal
    /// cannot show. The widths are those of the process's locale.
    int Write(int row, int column, int width, std::string_view text, Style style = {});
    /// The columns that Write takes where there is room for all of `text`.
    int Columns(std::string_view text) const;
    /// One glyph of one column.
    void Put(int row, int column, std::string_view text, Style style = {});
    /// Fills a row's remaining cells up to `width` with blanks of that style.
    void Fill(int row, int column, int width, Style style);

    const Cell& At(int row, int column) const { return m_cells[Index(row, column)]; }

    bool operator==(const Canvas&) const = default;

  private:
    void Set(int row, int column, Cell cell);
    std::size_t Index(int row, int column) const {
        return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_size.columns) +
               static_cast<std::size_t>(column);
    }
    bool IsInside(int row, int column) const {
        return row >= 0 && column >= 0 && row < m_size.rows && column < m_size.columns;
    }

    Size m_size;
    Charset m_charset;
    std::vector<Cell> m_cells;
};

}  // namespace IpodControl::PlayerView
