// The conversion of a cover beside the same work done with the JPEG library alone (decode, box filter,
// encode), and a soak that shows whether conversions leave memory behind.
//
//     bench_album_art              medians of both, in ms, and their ratios, for several sizes; on a busy
//                                  machine the ratio of CPU time is the one that means something
//     bench_album_art soak 10000   growth of the process over so many conversions of different pictures
//     bench_album_art worst        the dearest pictures that are decoded, and some that are refused
#include "IpodService/AlbumArt.h"

#include <cstdio>
// libjpeg's header needs <cstdio> before it.
#include <jpeglib.h>

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ServiceUtil/Logger.h"
#include "bench/AlbumArtWorst.h"

namespace {

using Bytes = std::vector<u8>;

constexpr int kChannels = 3;
constexpr int kCoverQuality = 85;
constexpr int kThumbnailQuality = 75;
constexpr int kThumbnailSide = 100;

struct Pixels {
    Pixels(int w, int h) : width(w), height(h), bytes(static_cast<size_t>(w) * static_cast<size_t>(h) * 3) {}
    u8* Row(int y) { return bytes.data() + static_cast<size_t>(y) * static_cast<size_t>(width) * kChannels; }

    int width;
    int height;
    Bytes bytes;
};

/// Waves, edges and grain: about as hard to code as a photograph.
Pixels DrawCover(int width, int height, unsigned seed) {
    Pixels cover(width, height);
    std::minstd_rand random(seed + 1);
    const double scale = 0.01 + 0.002 * (seed % 17);
    for (int y = 0; y < height; ++y) {
        u8* row = cover.Row(y);
        for (int x = 0; x < width; ++x) {
            const double wave = 60 * std::sin(x * scale) + 60 * std::cos((y + x / 3) * scale);
            const int grain = static_cast<int>(random() % 24);
            const int edge = ((x / 37 + y / 53) % 2) * 30;
            for (int channel = 0; channel < kChannels; ++channel)
                *row++ = static_cast<u8>(
                    std::clamp(120 + static_cast<int>(wave) + grain + edge * channel, 0, 255));
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

Pixels Decode(const Bytes& jpeg) {
    jpeg_decompress_struct codec;
    jpeg_error_mgr errors;
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    Pixels pixels(static_cast<int>(codec.output_width), static_cast<int>(codec.output_height));
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = pixels.Row(static_cast<int>(codec.output_scanline));
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    return pixels;
}

Pixels Box(Pixels& from, int xFactor, int yFactor) {
    Pixels to(from.width / xFactor, from.height / yFactor);
    const unsigned area = static_cast<unsigned>(xFactor * yFactor);
    std::vector<unsigned> sums(static_cast<size_t>(to.width) * kChannels);
    for (int y = 0; y < to.height; ++y) {
        std::fill(sums.begin(), sums.end(), 0U);
        for (int line = 0; line < yFactor; ++line) {
            const u8* pixel = from.Row(y * yFactor + line);
            for (size_t x = 0; x < sums.size(); x += kChannels)
                for (int column = 0; column < xFactor; ++column)
                    for (size_t channel = 0; channel < kChannels; ++channel)
                        sums[x + channel] += *pixel++;
        }
        std::transform(sums.begin(), sums.end(), to.Row(y),
                       [area](unsigned sum) { return static_cast<u8>((sum + area / 2) / area); });
    }
    return to;
}

Bytes ConvertPlainly(const Bytes& jpeg) {
    Pixels pixels = Decode(jpeg);
    Pixels small = Box(pixels, pixels.width / kThumbnailSide, pixels.height / kThumbnailSide);
    return Encode(small, kThumbnailQuality);
}

DeliveredPicture Delivered(const Bytes& jpeg, int width, int height) {
    return {static_cast<u32>(height), static_cast<u32>(width), static_cast<u32>(jpeg.size()), jpeg};
}

double CpuMilliseconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

class Cost {
  public:
    void Measure(const std::function<void()>& work) {
        const double cpu = CpuMilliseconds();
        const auto begin = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
        m_wall.push_back(taken.count());
        m_cpu.push_back(CpuMilliseconds() - cpu);
    }
    double Wall() { return Median(m_wall); }
    double Cpu() { return Median(m_cpu); }

  private:
    std::vector<double> m_wall;
    std::vector<double> m_cpu;
};

void Compare(int width, int height, double most) {
    constexpr int kRounds = 200;
    Pixels cover = DrawCover(width, height, 0);
    const Bytes jpeg = Encode(cover, kCoverQuality);
    Cost ours;
    Cost plain;
    for (int round = 0; round < kRounds; ++round) {
        ours.Measure([&] { ConvertAlbumArt(Delivered(jpeg, width, height)); });
        plain.Measure([&] { ConvertPlainly(jpeg); });
    }
    std::printf("%4d x %-4d %7zu bytes: %6.2f ms, plain %6.2f ms, ratio %.2f (at most %.1f); of CPU %.2f\n",
                width, height, jpeg.size(), ours.Wall(), plain.Wall(), ours.Wall() / plain.Wall(), most,
                ours.Cpu() / plain.Cpu());
}

long AnonymousKilobytes() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == "RssAnon:") {
            long kilobytes = 0;
            status >> kilobytes;
            return kilobytes;
        }
    return -1;
}

void Soak(int conversions) {
    constexpr int kWarmUp = 500;
    constexpr int kSizes[] = {640, 400, 700, 1000, 333};
    long start = 0;
    for (int i = 0; i < kWarmUp + conversions; ++i) {
        if (i == kWarmUp)
            start = AnonymousKilobytes();
        const int side = kSizes[i % 5];
        Pixels cover = DrawCover(side, side, static_cast<unsigned>(i));
        const Bytes jpeg = Encode(cover, kCoverQuality);
        ConvertAlbumArt(Delivered(jpeg, side, side));
    }
    const long end = AnonymousKilobytes();
    std::printf("%d conversions: %ld kB anonymous before, %ld kB after, growth %ld kB (at most 2048)\n",
                conversions, start, end, end - start);
}

}  // namespace

int main(int argc, char** argv) {
    CLogger::Instance().SetLevel(LogLevel::kOff);
    if (argc > 1 && std::strcmp(argv[1], "soak") == 0) {
        Soak(argc > 2 ? std::atoi(argv[2]) : 10000);
        return 0;
    }
    if (argc > 1 && std::strcmp(argv[1], "worst") == 0) {
        MeasureWorstPictures();
        return 0;
    }
    Compare(640, 640, 2.2);
    Compare(1200, 1200, 2.2);
    Compare(640, 480, 2.2);
    Compare(500, 500, 3);
    Compare(700, 700, 3);
    Compare(1100, 1100, 3);
    return 0;
}
