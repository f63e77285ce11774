// A file that is there whole, or not at all.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace IpodControl {

/// Puts `bytes` in place of what `path` holds; "-" is standard output. What is no regular file, such as a
/// pipe, is written to as it is. None when it is done, else a sentence that says why not.
std::optional<std::string> WriteFile(const std::string& path, std::string_view bytes);

}  // namespace IpodControl
