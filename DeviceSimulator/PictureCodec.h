// Decoding and encoding of cover pictures. Nothing here throws for bad bytes, and nothing allocates by what
// they claim before the claim has been checked.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "DeviceSimulator/Picture.h"

namespace DeviceSimulator {

/// A cover that is made here is no larger than this in either direction.
constexpr std::uint32_t kMaxCoverSide = 640;

/// Pictures that claim more pixels are refused: what they would need to be decoded is not worth a cover.
constexpr std::uint64_t kMaxPixels = 32U << 20;

/// Rows of red, green, blue, without padding.
struct RgbImage {
    RgbImage() = default;
    explicit RgbImage(PictureSize s) : size(s), pixels(std::size_t{3} * s.width * s.height) {}

    PictureSize size;
    std::vector<std::uint8_t> pixels;
};

struct JpegHeader {
    PictureSize size;
    /// Grey or colour as every decoder shows it; else something for print, with four components.
    bool common = false;
};

/// What the head of a JPEG says; none when it is not one, or is refused for its size.
std::optional<JpegHeader> ReadJpegHeader(std::span<const std::uint8_t> bytes);

/// A JPEG, decoded at a size that is a divisor of its own but not below `wanted` where it is not below it
/// already. A damaged body gives what could be read of it.
std::optional<RgbImage> DecodeJpeg(std::span<const std::uint8_t> bytes, PictureSize wanted);

/// A PNG, over white where it is transparent.
std::optional<RgbImage> DecodePng(std::span<const std::uint8_t> bytes);

/// `image`, not empty, as a JPEG of the best quality up to 90 that stays within width * height * 2 bytes;
/// none when even the lowest does not.
std::optional<Picture> EncodeJpeg(const RgbImage& image);

}  // namespace DeviceSimulator
