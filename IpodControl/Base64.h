// How pictures come over the wire.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace IpodControl {

/// The bytes; none for text that is not base64.
std::optional<std::string> DecodeBase64(std::string_view text);

}  // namespace IpodControl
