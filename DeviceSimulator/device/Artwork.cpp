#include "DeviceSimulator/device/Artwork.h"

#include <algorithm>
#include <random>
#include <utility>

#include "DeviceSimulator/music/CoverDrawing.h"
#include "ServiceUtil/JpegImage.h"

namespace DeviceSimulator {

namespace {

constexpr int kQuality = 85;

/// Half of the bytes, still reported at its full size.
std::shared_ptr<const Picture> Truncate(Picture whole) {
    whole.bytes.resize(whole.bytes.size() / 2);
    return std::make_shared<const Picture>(std::move(whole));
}

/// The same at every call.
std::shared_ptr<const Picture> MakeRubbish() {
    Picture rubbish{std::vector<std::uint8_t>(10000), 640, 640};
    std::generate(rubbish.bytes.begin(), rubbish.bytes.end(),
                  [random = std::mt19937()]() mutable { return static_cast<std::uint8_t>(random()); });
    return std::make_shared<const Picture>(std::move(rubbish));
}

}  // namespace

std::shared_ptr<const Picture> ApplyArtworkVariant(ArtworkVariant variant,
                                                   std::shared_ptr<const Picture> cover,
                                                   const TrackInfo& track) {
    const auto draw = [&](PictureSize size) { return DrawPicture(size, track.album, track.artist); };
    switch (variant) {
        case ArtworkVariant::None:
            return nullptr;
        case ArtworkVariant::Truncated:
            return Truncate(cover != nullptr ? *cover : *draw({640, 640}));
        case ArtworkVariant::NotJpeg:
            return MakeRubbish();
        case ArtworkVariant::Narrow:
            return draw({90, 480});
        case ArtworkVariant::Huge:
            return draw({2000, 2000});
        case ArtworkVariant::Limit:
            return draw({320, 320});
        case ArtworkVariant::AsIs:
            break;
    }
    return cover;
}

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

DevMgrResult DeliverPicture(const Picture* picture, std::span<std::uint8_t> block, PictureSize& size) {
    if (picture == nullptr) {
        return DEV_MGR_IAP_ARTWORK_NOT_PRESENT_ERROR;
    }
    if (picture->bytes.size() > block.size()) {
        return DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY;
    }
    const std::uint64_t length = std::uint64_t{picture->width} * picture->height * 2;
    const auto room = static_cast<std::size_t>(std::min<std::uint64_t>(length, block.size()));
    const auto end = std::copy(picture->bytes.begin(), picture->bytes.end(), block.begin());
    if (room > picture->bytes.size()) {
        std::fill_n(end, room - picture->bytes.size(), std::uint8_t{0});
    }
    size = PictureSize{picture->width, picture->height};
    return DEV_MGR_SUCCESS;
}

}  // namespace DeviceSimulator
