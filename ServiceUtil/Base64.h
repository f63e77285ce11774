// How pictures come over the wire.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// One line, filled up with "=". Any thread.
std::string EncodeBase64(std::span<const std::uint8_t> bytes);

/// The bytes; none for text with anything in it that is not base64. Filling may be missing. Any thread.
std::optional<std::string> DecodeBase64(std::string_view text);
