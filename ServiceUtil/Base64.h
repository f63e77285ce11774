// How pictures come over the wire.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// Writes the bytes behind `text`: one line, filled up with "=". `text` grows once. Any thread.
void AppendBase64(std::string& text, std::span<const std::uint8_t> bytes);

/// The bytes; none for text with anything in it that is not base64. Filling may be missing. Any thread.
std::optional<std::string> DecodeBase64(std::string_view text);
