// A cover's pixels.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace IpodControl::PlayerView {

using Rgb = std::array<std::uint8_t, 3>;

struct Picture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<Rgb> pixels;  ///< row by row
};

/// Made small while it is decoded. None when `jpeg` is no picture, or a larger one than the service sends.
/// Behind the picture's end mark anything may stand.
std::optional<Picture> DecodeJpeg(std::string_view jpeg);

/// The mean of the pixels behind each new one. A `picture` without pixels, and a size of 0, give none.
Picture Scale(const Picture& picture, std::size_t width, std::size_t height);

}  // namespace IpodControl::PlayerView
