#include "DeviceSimulator/PictureCover.h"

#include <algorithm>
#include <array>
#include <optional>

#include "DeviceSimulator/PictureCodec.h"

namespace DeviceSimulator {

namespace {

/// `side` scaled as `from` to `to`, rounded, at least 1.
std::uint32_t Scaled(std::uint32_t side, std::uint32_t from, std::uint32_t to) {
    const std::uint64_t scaled = (std::uint64_t{side} * to + from / 2) / from;
    return std::max<std::uint32_t>(1, static_cast<std::uint32_t>(scaled));
}

PictureSize FitInside(PictureSize size, std::uint32_t limit) {
    const std::uint32_t longer = std::max(size.width, size.height);
    if (longer <= limit) {
        return size;
    }
    return {Scaled(size.width, longer, limit), Scaled(size.height, longer, limit)};
}

/// The mean colour of the source's pixels from (left, top) to before (right, bottom).
std::array<std::uint8_t, 3> Mean(const RgbImage& source, std::uint32_t left, std::uint32_t right,
                                 std::uint32_t top, std::uint32_t bottom) {
    std::array<std::uint64_t, 3> sums{};
    for (std::uint32_t y = top; y < bottom; ++y) {
        const std::uint8_t* pixel = source.pixels.data() + 3 * (std::size_t{y} * source.size.width + left);
        for (std::uint32_t x = left; x < right; ++x) {
            for (auto& sum : sums) {
                sum += *pixel++;
            }
        }
    }
    const std::uint64_t count = std::uint64_t{right - left} * (bottom - top);
    std::array<std::uint8_t, 3> mean{};
    std::transform(sums.begin(), sums.end(), mean.begin(),
                   [count](std::uint64_t sum) { return static_cast<std::uint8_t>(sum / count); });
    return mean;
}

/// Each pixel is the mean of those that it replaces; growing repeats pixels.
RgbImage Resize(const RgbImage& source, PictureSize size) {
    const auto edge = [](std::uint32_t at, std::uint32_t from, std::uint32_t to) {
        return static_cast<std::uint32_t>(std::uint64_t{at} * from / to);
    };
    RgbImage image(size);
    auto out = image.pixels.begin();
    for (std::uint32_t y = 0; y < size.height; ++y) {
        const std::uint32_t top = edge(y, source.size.height, size.height);
        const std::uint32_t bottom = std::max(top + 1, edge(y + 1, source.size.height, size.height));
        for (std::uint32_t x = 0; x < size.width; ++x) {
            const std::uint32_t left = edge(x, source.size.width, size.width);
            const std::uint32_t right = std::max(left + 1, edge(x + 1, source.size.width, size.width));
            out = std::ranges::copy(Mean(source, left, right, top, bottom), out).out;
        }
    }
    return image;
}

std::optional<RgbImage> Decode(std::span<const std::uint8_t> bytes, const std::optional<JpegHeader>& jpeg) {
    return jpeg ? DecodeJpeg(bytes, FitInside(jpeg->size, kMaxCoverSide)) : DecodePng(bytes);
}

/// The head of a JPEG alone takes more than the bytes that a tiny picture has room for: those are enlarged.
std::optional<Picture> EncodeWithinRoom(RgbImage image) {
    for (;;) {
        auto picture = EncodeJpeg(image);
        const PictureSize doubled{2 * image.size.width, 2 * image.size.height};
        if (picture || std::max(doubled.width, doubled.height) > kMaxCoverSide) {
            return picture;
        }
        image = Resize(image, doubled);
    }
}

bool PassesAsItStands(std::span<const std::uint8_t> bytes, const JpegHeader& jpeg) {
    return jpeg.common && bytes.size() <= kMaxCoverBytes &&
           bytes.size() <= std::uint64_t{2} * jpeg.size.width * jpeg.size.height;
}

}  // namespace

std::shared_ptr<const Picture> MakeCover(std::span<const std::uint8_t> bytes) {
    const auto jpeg = ReadJpegHeader(bytes);
    if (jpeg && PassesAsItStands(bytes, *jpeg)) {
        return std::make_shared<const Picture>(
            Picture{{bytes.begin(), bytes.end()}, jpeg->size.width, jpeg->size.height});
    }
    auto image = Decode(bytes, jpeg);
    if (!image) {
        return nullptr;
    }
    const PictureSize size = FitInside(image->size, kMaxCoverSide);
    if (size != image->size) {
        *image = Resize(*image, size);
    }
    auto picture = EncodeWithinRoom(std::move(*image));
    return picture ? std::make_shared<const Picture>(std::move(*picture)) : nullptr;
}

}  // namespace DeviceSimulator
