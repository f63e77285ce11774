// Characters of texts that come from the device.
#pragma once

#include <string>
#include <string_view>

namespace IpodControl {

/// Takes one character off the front of `text`, which is not empty; U+FFFD for a byte that begins none.
char32_t TakeCharacter(std::string_view& text);

void AppendUtf8(std::string& text, char32_t character);

/// False for what a terminal would obey (controls), and for what is not seen itself but changes how the rest
/// of the line is shown.
bool IsHarmless(char32_t character);

}  // namespace IpodControl
