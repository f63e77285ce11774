#include "DeviceSimulator/device/CoverFitting.h"

#include <algorithm>
#include <utility>

#include "ServiceUtil/JpegImage.h"

namespace DeviceSimulator {

namespace {

constexpr int kQuality = 85;

}  // namespace

std::shared_ptr<const Picture> FitCover(std::shared_ptr<const Picture> cover, PictureSize wanted) {
    if (cover == nullptr || wanted.width == 0 || wanted.height == 0 ||
        (cover->width <= wanted.width && cover->height <= wanted.height)) {
        return cover;
    }
    // As much smaller as the side that is farther out of bounds asks for.
    const std::uint64_t longest = std::max(cover->width, cover->height);
    const std::uint64_t fitting = std::min(longest * wanted.width / std::max(1U, cover->width),
                                           longest * wanted.height / std::max(1U, cover->height));
    const auto image = DecodeJpeg(cover->bytes, std::max(1U, static_cast<std::uint32_t>(fitting)));
    auto bytes = image ? EncodeJpeg(*image, kQuality) : std::nullopt;
    if (!bytes) {
        return cover;
    }
    return std::make_shared<const Picture>(Picture{std::move(*bytes), image->size.width, image->size.height});
}

}  // namespace DeviceSimulator
