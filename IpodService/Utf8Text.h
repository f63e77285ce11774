// Texts of the device on their way into JSON.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// Bytes of whole characters at the front of `text`. Any thread.
std::size_t WellFormedLength(std::string_view text);

/// Whether `text` is the beginning of a character that ends too early. Any thread.
bool IsCutCharacter(std::string_view text);

/// `text` with nothing in it that the JSON writer would damage. Well-formed UTF-8 stays byte for byte. Where
/// the text fills the `recordSize` bytes that it was read from, a character cut off at its end is dropped.
/// Every other byte that belongs to no well-formed character becomes U+FFFD. Any thread.
std::string WellFormedUtf8(std::string_view text, std::size_t recordSize);
