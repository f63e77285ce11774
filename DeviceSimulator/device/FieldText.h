// Texts in the fixed fields of the interface's records.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

namespace DeviceSimulator {

/// The longest start of `text` of at most `room` bytes that does not end inside a UTF-8 character. Bytes that
/// are not UTF-8 are cut at `room`.
std::string_view CutText(std::string_view text, std::size_t room);

/// Fills `field` with `text`, cut to leave room for the NUL, and zeros behind it.
void CopyText(std::span<char> field, std::string_view text);

}  // namespace DeviceSimulator
