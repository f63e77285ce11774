// Pictures as pixels: from JPEG, made smaller, and to JPEG.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "ServiceUtil/JpegCost.h"

/// In pixels.
struct ImageSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    bool operator==(const ImageSize&) const = default;
};

/// Rows of red, green, blue, a byte each, without padding.
struct RgbImage {
    RgbImage() = default;
    explicit RgbImage(ImageSize s) : size(s), pixels(std::size_t{3} * s.width * s.height) {}

    /// 3 bytes.
    const std::uint8_t* At(std::uint32_t x, std::uint32_t y) const {
        return pixels.data() + 3 * (std::size_t{y} * size.width + x);
    }

    ImageSize size;
    std::vector<std::uint8_t> pixels;
};

/// A JPEG as an image of its own proportions whose longer side is at most `longestSide`: decoded at the
/// smallest of the decoder's scales that is not below that, then shrunk. None when it is none that
/// ReadJpegCost knows, costs more than `limits`, or cannot be decoded; a damaged body gives what could be
/// read of it, and behind the end anything may stand. Beside what the limits allow it takes 3 bytes a pixel
/// of the scale decoded at. Any thread.
std::optional<RgbImage> DecodeJpeg(std::span<const std::uint8_t> bytes, std::uint32_t longestSide,
                                   const JpegLimits& limits = {});

/// `quality`: 1 to 100; colours are halved. None for an image without pixels or one that the encoder refuses
/// (more than 65,535 pixels a side). Any thread.
std::optional<std::vector<std::uint8_t>> EncodeJpeg(const RgbImage& image, int quality);

/// `size` in its own proportions with no side above `longestSide`, and none below 1; as it is where it fits.
ImageSize FitInside(ImageSize size, std::uint32_t longestSide);

/// Each pixel is the mean of those that it stands for; growing repeats pixels. An image without pixels, and a
/// size of 0, give none.
RgbImage Resize(const RgbImage& image, ImageSize size);
