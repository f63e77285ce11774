#include "DeviceSimulator/media/PictureCover.h"

#include <png.h>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "ServiceUtil/JpegImage.h"

namespace DeviceSimulator {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint32_t kLongestSide = 640;
/// A PNG is decoded whole.
constexpr std::uint64_t kMostPngPixels = 32U << 20;

/// Over white where it is transparent.
std::optional<RgbImage> ReadPng(Bytes bytes) {
    constexpr png_color kWhite{255, 255, 255};
    png_image png{};
    png.version = PNG_IMAGE_VERSION;
    const std::unique_ptr<png_image, decltype(&png_image_free)> freed(&png, png_image_free);
    if (png_image_begin_read_from_memory(&png, bytes.data(), bytes.size()) == 0 ||
        std::uint64_t{png.width} * png.height > kMostPngPixels) {
        return std::nullopt;
    }
    png.format = PNG_FORMAT_RGB;
    RgbImage image(ImageSize{png.width, png.height});
    const bool isRead = png_image_finish_read(&png, &kWhite, image.pixels.data(), 0, nullptr) != 0;
    return isRead ? std::optional(std::move(image)) : std::nullopt;
}

std::uint64_t RoomOf(std::uint32_t width, std::uint32_t height) {
    return std::min<std::uint64_t>(std::uint64_t{2} * width * height, kMostCoverBytes);
}

std::optional<Cover> EncodeWithinRoom(const RgbImage& image) {
    for (const int quality : {90, 75, 50, 25}) {
        auto bytes = EncodeJpeg(image, quality);
        if (bytes && bytes->size() <= RoomOf(image.size.width, image.size.height)) {
            return Cover{std::move(*bytes), image.size.width, image.size.height};
        }
    }
    return std::nullopt;
}

bool PassesAsItStands(Bytes bytes, const JpegCost& jpeg) {
    return (jpeg.components == 1 || jpeg.components == 3) && jpeg.IsAffordable() &&
           bytes.size() <= RoomOf(jpeg.width, jpeg.height);
}

}  // namespace

std::optional<Cover> MakeCover(Bytes bytes) {
    const auto jpeg = ReadJpegCost(bytes);
    if (jpeg && PassesAsItStands(bytes, *jpeg)) {
        return Cover{{bytes.begin(), bytes.end()}, jpeg->width, jpeg->height};
    }
    auto image = jpeg ? DecodeJpeg(bytes, kLongestSide) : ReadPng(bytes);
    if (!image) {
        return std::nullopt;
    }
    image = Resize(*image, FitInside(image->size, kLongestSide));
    // The head of a JPEG alone takes more than the bytes that a tiny picture has room for: those are
    // enlarged.
    auto cover = EncodeWithinRoom(*image);
    while (!cover && 2 * std::max(image->size.width, image->size.height) <= kLongestSide) {
        image = Resize(*image, {2 * image->size.width, 2 * image->size.height});
        cover = EncodeWithinRoom(*image);
    }
    return cover;
}

}  // namespace DeviceSimulator
