// Texts of the player's on a person's terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace IpodControl {

/// False for what a terminal would obey (controls), and for what is not seen itself but changes how the rest
/// of the line is shown.
bool IsHarmless(char32_t character);
/// `text` with U+FFFD for everything that is not harmless: controls, escape sequences, line ends, changes of
/// the writing direction, bytes that are not UTF-8.
std::string Harmless(std::string_view text);
/// The same for a line of JSON, which stays the same JSON.
std::string HarmlessJson(std::string_view line);

/// "3:07", "1:02:05"; what is below 0 is 0.
std::string ClockText(std::int64_t milliseconds);
/// "1,204"; of a number that is not negative.
std::string Grouped(std::int64_t number);

/// In terminal cells. Of harmless text.
std::size_t DisplayWidth(std::string_view text);
/// Cut to at most `width` cells.
std::string Shortened(std::string_view text, std::size_t width);

}  // namespace IpodControl
