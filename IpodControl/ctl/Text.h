// Texts of the player's on a person's terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace IpodControl {

/// `text` with everything replaced that a terminal would obey or that would break the line: controls, escape
/// sequences, changes of the writing direction, bytes that are not UTF-8.
std::string Harmless(std::string_view text);
/// The same for a line of JSON, which stays the same JSON.
std::string HarmlessJson(std::string_view line);

/// In terminal cells. Of harmless text.
std::size_t DisplayWidth(std::string_view text);
/// Filled up with blanks to `width` cells.
std::string Padded(std::string_view text, std::size_t width);
/// Cut to at most `width` cells.
std::string Shortened(std::string_view text, std::size_t width);

/// In lower case, as far as letters have one.
std::string Folded(std::string_view text);
/// How many letters have to be changed, left out or added to get from one to the other.
std::size_t EditDistance(std::string_view left, std::string_view right);

}  // namespace IpodControl
