// Covers of pictures that music files hold.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace DeviceSimulator {

/// JPEG bytes with the size that they decode to, in pixels.
struct Cover {
    std::vector<std::uint8_t> bytes;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// The bytes of a picture as a cover: a JPEG as it stands where its bytes stay within width * height * 2 and
/// kMostCoverBytes; other JPEGs, and PNGs, as a new JPEG of at most 640 x 640 with the same aspect, within
/// the same bounds. None when they cannot be decoded or claim to be larger than is reasonable. Nothing is
/// allocated by what they claim before the claim has been checked. Any thread may call.
std::optional<Cover> MakeCover(std::span<const std::uint8_t> bytes);

}  // namespace DeviceSimulator
