// A cover picture as the player passes it on.
#pragma once

#include <cstdint>
#include <vector>

namespace DeviceSimulator {

/// In pixels.
struct PictureSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool operator==(const PictureSize&) const = default;
};

/// JPEG bytes with the size that they decode to, in pixels. bytes.size() <= width * height * 2.
struct Picture {
    std::vector<std::uint8_t> bytes;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

}  // namespace DeviceSimulator
