#include "ServiceUtil/JpegImage.h"

#include <turbojpeg.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>

namespace {

struct CloseCodec {
    void operator()(void* codec) const { tjDestroy(codec); }
};
using Codec = std::unique_ptr<void, CloseCodec>;

struct Stored {
    int width = 0;
    int height = 0;
    int colours = 0;
};

/// What a warning is about, as an end that comes too early, leaves a picture.
bool IsUsable(int result, const Codec& codec) {
    return result == 0 || tjGetErrorCode(codec.get()) == TJERR_WARNING;
}

ImageSize Scaled(const Stored& stored, tjscalingfactor scale) {
    return {static_cast<std::uint32_t>(TJSCALED(stored.width, scale)),
            static_cast<std::uint32_t>(TJSCALED(stored.height, scale))};
}

/// The smallest that the decoder can give without falling below `wanted`.
ImageSize ChooseScale(const Stored& stored, ImageSize wanted) {
    ImageSize best = Scaled(stored, {1, 1});
    int count = 0;
    const tjscalingfactor* const scales = tjGetScalingFactors(&count);
    for (const tjscalingfactor& scale : std::span(scales, static_cast<std::size_t>(std::max(count, 0)))) {
        const ImageSize size = Scaled(stored, scale);
        if (size.width >= wanted.width && size.height >= wanted.height && size.width < best.width) {
            best = size;
        }
    }
    return best;
}

/// Four components are stored inverted by what writes them.
void TakeBlackOut(std::span<const std::uint8_t> pixels, RgbImage& image) {
    auto out = image.pixels.begin();
    for (std::size_t i = 0; i + 3 < pixels.size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
            *out++ = static_cast<std::uint8_t>(pixels[i + c] * pixels[i + 3] / 255);
        }
    }
}

bool DecodeInto(const Codec& codec, std::span<const std::uint8_t> bytes, ImageSize size, int format,
                std::uint8_t* pixels) {
    return IsUsable(
        tjDecompress2(codec.get(), bytes.data(), bytes.size(), pixels, static_cast<int>(size.width), 0,
                      static_cast<int>(size.height), format, TJFLAG_ACCURATEDCT),
        codec);
}

std::optional<RgbImage> Decode(const Codec& codec, std::span<const std::uint8_t> bytes, const Stored& stored,
                               ImageSize wanted) {
    RgbImage image(ChooseScale(stored, wanted));
    if (stored.colours != TJCS_CMYK && stored.colours != TJCS_YCCK) {
        const bool isDecoded = DecodeInto(codec, bytes, image.size, TJPF_RGB, image.pixels.data());
        return isDecoded ? std::optional(std::move(image)) : std::nullopt;
    }
    std::vector<std::uint8_t> pixels(std::size_t{4} * image.size.width * image.size.height);
    if (!DecodeInto(codec, bytes, image.size, TJPF_CMYK, pixels.data())) {
        return std::nullopt;
    }
    TakeBlackOut(pixels, image);
    return image;
}

std::uint32_t ScaledSide(std::uint32_t side, std::uint32_t from, std::uint32_t to) {
    const std::uint64_t scaled = (std::uint64_t{side} * to + from / 2) / from;
    return std::max<std::uint32_t>(1, static_cast<std::uint32_t>(scaled));
}

/// From `first` to before `last`.
struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

/// What the pixel `at` of `to` stands for among `from`.
Range SourceOf(std::uint32_t at, std::uint32_t from, std::uint32_t to) {
    const auto edge = [from, to](std::uint32_t i) {
        return static_cast<std::uint32_t>(std::uint64_t{i} * from / to);
    };
    return {edge(at), std::max(edge(at) + 1, edge(at + 1))};
}

std::array<std::uint8_t, 3> Mean(const RgbImage& image, Range columns, Range rows) {
    std::array<std::uint64_t, 3> sums{};
    for (std::uint32_t y = rows.first; y < rows.last; ++y) {
        const std::uint8_t* pixel = image.At(columns.first, y);
        for (std::uint32_t x = columns.first; x < columns.last; ++x) {
            for (auto& sum : sums) {
                sum += *pixel++;
            }
        }
    }
    const std::uint64_t count = std::uint64_t{columns.last - columns.first} * (rows.last - rows.first);
    std::array<std::uint8_t, 3> mean{};
    std::transform(sums.begin(), sums.end(), mean.begin(),
                   [count](std::uint64_t sum) { return static_cast<std::uint8_t>(sum / count); });
    return mean;
}

}  // namespace

std::optional<RgbImage> DecodeJpeg(std::span<const std::uint8_t> bytes, std::uint32_t longestSide,
                                   const JpegLimits& limits) {
    const auto cost = ReadJpegCost(bytes);
    if (!cost || !cost->IsAffordable(limits) || longestSide == 0) {
        return std::nullopt;
    }
    const Codec codec(tjInitDecompress());
    Stored stored;
    int sampling = 0;
    if (!codec || !IsUsable(tjDecompressHeader3(codec.get(), bytes.data(), bytes.size(), &stored.width,
                                                &stored.height, &sampling, &stored.colours),
                            codec)) {
        return std::nullopt;
    }
    const ImageSize wanted = FitInside(Scaled(stored, {1, 1}), longestSide);
    auto image = Decode(codec, bytes, stored, wanted);
    return image && image->size != wanted ? Resize(*image, wanted) : std::move(image);
}

std::optional<std::vector<std::uint8_t>> EncodeJpeg(const RgbImage& image, int quality) {
    constexpr std::uint32_t kLongestSide = 65'535;
    const Codec codec(tjInitCompress());
    if (!codec || image.pixels.empty() || std::max(image.size.width, image.size.height) > kLongestSide) {
        return std::nullopt;
    }
    const auto width = static_cast<int>(image.size.width);
    const auto height = static_cast<int>(image.size.height);
    std::vector<std::uint8_t> bytes(tjBufSize(width, height, TJSAMP_420));
    unsigned char* place = bytes.data();
    unsigned long size = bytes.size();
    if (tjCompress2(codec.get(), image.pixels.data(), width, 0, height, TJPF_RGB, &place, &size, TJSAMP_420,
                    quality, TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT) != 0) {
        return std::nullopt;
    }
    bytes.resize(size);
    return bytes;
}

ImageSize FitInside(ImageSize size, std::uint32_t longestSide) {
    const std::uint32_t longer = std::max(size.width, size.height);
    if (longer <= longestSide) {
        return size;
    }
    return {ScaledSide(size.width, longer, longestSide), ScaledSide(size.height, longer, longestSide)};
}

RgbImage Resize(const RgbImage& image, ImageSize size) {
    if (image.pixels.empty() || size.width == 0 || size.height == 0) {
        return {};
    }
    RgbImage resized(size);
    auto out = resized.pixels.begin();
    for (std::uint32_t y = 0; y < size.height; ++y) {
        const Range rows = SourceOf(y, image.size.height, size.height);
        for (std::uint32_t x = 0; x < size.width; ++x) {
            out = std::ranges::copy(Mean(image, SourceOf(x, image.size.width, size.width), rows), out).out;
        }
    }
    return resized;
}
