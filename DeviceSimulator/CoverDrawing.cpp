#include "DeviceSimulator/CoverDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "DeviceSimulator/LibraryRandom.h"

namespace DeviceSimulator {

namespace {

constexpr std::uint32_t kCycle = 32;
constexpr std::uint32_t kWideAlbum = 5;
constexpr std::uint32_t kBareAlbum = 11;

using Colour = std::array<double, 3>;

Colour DrawColour(LibraryRandom& random, double brightness) {
    const double hue = random.Below(360) * 3.14159265358979 / 180.0;
    Colour colour{};
    for (std::size_t i = 0; i < colour.size(); ++i) {
        const double turn = 2.0943951023932 * static_cast<double>(i);
        colour[i] = brightness * (140.0 + 100.0 * std::cos(hue + turn));
    }
    return colour;
}

/// How much of the second colour's pattern covers a point; x and y run from -1 to 1.
double PatternAt(std::uint32_t pattern, double scale, double x, double y) {
    switch (pattern) {
        case 0:  // rings
            return std::sin(scale * std::hypot(x, y));
        case 1:  // stripes
            return std::sin(scale * (x + y));
        case 2:  // a grid of dots
            return std::sin(scale * x) * std::sin(scale * y);
        default:  // rays
            return std::sin(scale * std::atan2(y, x));
    }
}

PictureSize SizeOf(std::uint32_t album) {
    constexpr std::array<std::uint32_t, 4> kSides{320, 480, 640, 300};
    if (album % kCycle == kWideAlbum) {
        return {600, 300};
    }
    const std::uint32_t side = kSides[album % kSides.size()];
    return {side, side};
}

}  // namespace

RgbImage DrawCoverImage(PictureSize size, std::string_view name, std::string_view artist) {
    LibraryRandom random(std::string(name) + '\0' + std::string(artist));
    const Colour top = DrawColour(random, 1.0);
    const Colour bottom = DrawColour(random, 0.6);
    const std::uint32_t pattern = random.Below(4);
    const double scale = 6.0 + random.Below(8);  // whole, so that rays close
    RgbImage image(size);
    auto* out = image.pixels.data();
    for (std::uint32_t row = 0; row < size.height; ++row) {
        const double down = row / static_cast<double>(size.height);
        for (std::uint32_t column = 0; column < size.width; ++column) {
            const double across = column / static_cast<double>(size.width);
            const double light = PatternAt(pattern, scale, 2 * across - 1, 2 * down - 1) > 0 ? 1.0 : 0.75;
            for (std::size_t i = 0; i < top.size(); ++i) {
                const double value = light * (top[i] + (bottom[i] - top[i]) * down);
                *out++ = static_cast<std::uint8_t>(std::clamp(value, 0.0, 255.0));
            }
        }
    }
    return image;
}

std::shared_ptr<const Picture> DrawCover(std::uint32_t album, std::string_view name,
                                         std::string_view artist) {
    if (album % kCycle == kBareAlbum) {
        return nullptr;
    }
    auto picture = EncodeJpeg(DrawCoverImage(SizeOf(album), name, artist));
    return picture ? std::make_shared<const Picture>(std::move(*picture)) : nullptr;
}

}  // namespace DeviceSimulator
