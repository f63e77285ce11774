// Characters of texts that come from outside.
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

/// Takes one character off the front of `text`, which is not empty; U+FFFD for a byte that begins none. Any
/// thread.
char32_t TakeCharacter(std::string_view& text);

/// Any thread.
void AppendUtf8(std::string& text, char32_t character);

/// At most `most` bytes of the front of `text`, without a character that this would cut. Any thread.
std::string_view CutUtf8(std::string_view text, std::size_t most);
