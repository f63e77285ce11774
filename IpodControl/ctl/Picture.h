// The picture that the service delivers, with padding behind the JPEG.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace IpodControl {

struct Jpeg {
    std::size_t length = 0;   ///< up to and with its end marker; all bytes where it has none
    std::size_t width = 0;    ///< pixels, as its frame header has them; 0: none was found
    std::size_t height = 0;   ///< pixels
    bool isComplete = false;  ///< it has an end marker
};

/// None when `bytes` do not begin as a JPEG. Goes from segment to segment, so that the end of a small picture
/// inside another's header is not taken for the end.
std::optional<Jpeg> MeasureJpeg(std::string_view bytes);

}  // namespace IpodControl
