#include "DeviceSimulator/music/CoverDrawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include "DeviceSimulator/music/LibraryRandom.h"

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

PictureSize SizeOf(std::uint32_t album) {
    constexpr std::array<std::uint32_t, 4> kSides{320, 480, 640, 300};
    if (album % kCycle == kWideAlbum) {
        return {600, 300};
    }
    const std::uint32_t side = kSides[album % kSides.size()];
    return {side, side};
}

}  // namespace

RgbImage DrawCoverImage(ImageSize size, std::string_view name, std::string_view artist) {
    LibraryRandom random(std::string(name) + '\0' + std::string(artist));
    const Colour top = DrawColour(random, 1.0);
    const Colour bottom = DrawColour(random, 0.6);
    const double across = 6.0 + random.Below(8);
    const double down = 6.0 + random.Below(8);
    RgbImage image(size);
    auto out = image.pixels.begin();
    for (std::uint32_t row = 0; row < size.height; ++row) {
        const double y = row / static_cast<double>(size.height);
        for (std::uint32_t column = 0; column < size.width; ++column) {
            const double x = column / static_cast<double>(size.width);
            const double light = std::sin(across * x) * std::sin(down * y) > 0 ? 1.0 : 0.75;
            out = std::transform(top.begin(), top.end(), bottom.begin(), out, [&](double from, double to) {
                return static_cast<std::uint8_t>(light * (from + (to - from) * y));
            });
        }
    }
    return image;
}

std::shared_ptr<const Picture> DrawPicture(PictureSize size, std::string_view name, std::string_view artist) {
    constexpr int kQuality = 90;
    auto bytes = EncodeJpeg(DrawCoverImage({size.width, size.height}, name, artist), kQuality);
    return std::make_shared<const Picture>(
        Picture{bytes ? std::move(*bytes) : std::vector<std::uint8_t>(), size.width, size.height});
}

std::shared_ptr<const Picture> DrawCover(std::uint32_t album, std::string_view name,
                                         std::string_view artist) {
    return album % kCycle == kBareAlbum ? nullptr : DrawPicture(SizeOf(album), name, artist);
}

}  // namespace DeviceSimulator
