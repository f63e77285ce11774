// Names from the device as cells of a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace IpodControl::PlayerView {

enum class Charset { Ascii, Utf8 };

/// One character with its combining marks, as the terminal takes it.
struct Glyph {
    std::string text;
    int columns = 1;  ///< 1 or 2
};

/// What `text` shows: control characters, and those that turn the direction of a line, are left out; what is
/// no UTF-8 is replaced, and so is what the terminal cannot show. The widths are those of the process's
/// locale.
std::vector<Glyph> Glyphs(std::string_view text, Charset charset);

/// The glyphs that fit into `columns`; cut ones end in "…".
std::vector<Glyph> Fit(std::string_view text, int columns, Charset charset);

int Columns(const std::vector<Glyph>& glyphs);

/// "1,204"
std::string Grouped(long long number);

}  // namespace IpodControl::PlayerView
