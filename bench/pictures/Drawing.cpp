#include "bench/pictures/Drawing.h"

#include <cstdio>
// libjpeg's header needs <cstdio> before it.
#include <jpeglib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <utility>

namespace Bench {
namespace {

constexpr int kChannels = 3;
constexpr int kCoverQuality = 85;
constexpr int kThumbnailQuality = 75;
constexpr unsigned kThumbnailSide = 100;

struct Pixels {
    Pixels(int w, int h) : width(w), height(h), bytes(static_cast<size_t>(w) * static_cast<size_t>(h) * 3) {}
    u8* Row(int y) { return bytes.data() + static_cast<size_t>(y) * static_cast<size_t>(width) * kChannels; }

    int width;
    int height;
    Bytes bytes;
};

/// Waves, edges and grain: about as hard to code as a photograph.
Pixels Draw(int width, int height, unsigned seed) {
    Pixels cover(width, height);
    std::minstd_rand random(seed + 1);
    const double scale = 0.01 + 0.002 * (seed % 17);
    for (int y = 0; y < height; ++y) {
        u8* row = cover.Row(y);
        for (int x = 0; x < width; ++x) {
            const double wave = 60 * std::sin(x * scale) + 60 * std::cos((y + x / 3) * scale);
            const int grain = static_cast<int>(random() % 24);
            const int edge = ((x / 37 + y / 53) % 2) * 30;
            for (int channel = 0; channel < kChannels; ++channel) {
                *row++ = static_cast<u8>(
                    std::clamp(120 + static_cast<int>(wave) + grain + edge * channel, 0, 255));
            }
        }
    }
    return cover;
}

Bytes Encode(Pixels& pixels, int quality) {
    jpeg_compress_struct codec;
    jpeg_error_mgr errors;
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &memory, &size);
    codec.image_width = static_cast<JDIMENSION>(pixels.width);
    codec.image_height = static_cast<JDIMENSION>(pixels.height);
    codec.input_components = kChannels;
    codec.in_color_space = JCS_RGB;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, quality, TRUE);
    jpeg_start_compress(&codec, TRUE);
    while (codec.next_scanline < codec.image_height) {
        JSAMPROW row = pixels.Row(static_cast<int>(codec.next_scanline));
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    Bytes encoded(memory, memory + size);
    std::free(memory);
    return encoded;
}

/// What the decoder divides by while it decodes: the service asks it for the same.
unsigned ScaleOnLoad(unsigned factor) {
    for (const unsigned scale : {8U, 4U, 2U}) {
        if (factor % scale == 0) {
            return scale;
        }
    }
    return 1;
}

struct Decoded {
    Pixels pixels;
    int rest;  ///< factor that is left to divide by
};

Decoded Decode(const Bytes& jpeg) {
    jpeg_decompress_struct codec;
    jpeg_error_mgr errors;
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
    jpeg_read_header(&codec, TRUE);
    const unsigned factor = codec.image_width / kThumbnailSide;
    codec.scale_num = 1;
    codec.scale_denom = ScaleOnLoad(factor);
    const int rest = static_cast<int>(factor / codec.scale_denom);
    jpeg_start_decompress(&codec);
    Pixels pixels(static_cast<int>(codec.output_width), static_cast<int>(codec.output_height));
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = pixels.Row(static_cast<int>(codec.output_scanline));
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    return {std::move(pixels), rest};
}

void AddLine(const u8* pixel, int factor, std::vector<unsigned>& sums) {
    for (size_t x = 0; x < sums.size(); x += kChannels) {
        for (int column = 0; column < factor; ++column) {
            for (size_t channel = 0; channel < kChannels; ++channel) {
                sums[x + channel] += *pixel++;
            }
        }
    }
}

Pixels Box(Pixels& from, int factor) {
    Pixels to(from.width / factor, from.height / factor);
    const unsigned area = static_cast<unsigned>(factor * factor);
    std::vector<unsigned> sums(static_cast<size_t>(to.width) * kChannels);
    for (int y = 0; y < to.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0U);
        for (int line = 0; line < factor; ++line) {
            AddLine(from.Row(y * factor + line), factor, sums);
        }
        std::transform(sums.begin(), sums.end(), to.Row(y),
                       [area](unsigned sum) { return static_cast<u8>((sum + area / 2) / area); });
    }
    return to;
}

}  // namespace

Bytes DrawCover(int side, unsigned seed) {
    Pixels cover = Draw(side, side, seed);
    return Encode(cover, kCoverQuality);
}

Bytes ConvertPlainly(const Bytes& jpeg) {
    Decoded decoded = Decode(jpeg);
    Pixels small = Box(decoded.pixels, decoded.rest);
    return Encode(small, kThumbnailQuality);
}

}  // namespace Bench
