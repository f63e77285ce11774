// Covers to thumbnails, beside the same work done with the JPEG library alone. Processor time counts all
// threads.
#include <benchmark/benchmark.h>

#include <string>

#include "IpodService/AlbumArt.h"
#include "ServiceUtil/Base64.h"
#include "bench/parts/Pictures.h"
#include "bench/parts/Service.h"
#include "bench/pictures/Drawing.h"

namespace Bench {
namespace {

std::string Base64(std::span<const u8> bytes) {
    std::string text;
    AppendBase64(text, bytes);
    return text;
}

void Convert(benchmark::State& state, int side) {
    Service::Instance();  // has the log
    const Bytes jpeg = DrawCover(side);
    const auto pixels = static_cast<u32>(side);
    const DeliveredPicture picture{pixels, pixels, static_cast<u32>(jpeg.size()), jpeg};
    static PictureLoader loader(PICTURE_MODULE);
    ConvertAlbumArt(picture, loader);  // the first one starts the image library
    for (auto _ : state) {
        benchmark::DoNotOptimize(Base64(ConvertAlbumArt(picture, loader).bytes));
    }
    EmptyLog();
}

void ConvertWithJpegAlone(benchmark::State& state, int side) {
    const Bytes jpeg = DrawCover(side);
    for (auto _ : state) {
        benchmark::DoNotOptimize(Base64(ConvertPlainly(jpeg)));
    }
}

void Register(int side) {
    const std::string name = "picture/" + std::to_string(side);
    for (auto* benchmark :
         {benchmark::RegisterBenchmark(name.c_str(), Convert, side),
          benchmark::RegisterBenchmark((name + "/floor").c_str(), ConvertWithJpegAlone, side)}) {
        benchmark->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime()->MinTime(0.02);
    }
}

}  // namespace

void RegisterPictures() {
    // Both sides of each step of the factor, and what lies between; 2000 last.
    constexpr int kSmallest = 321;
    constexpr int kLargest = 2000;
    Register(kSmallest);
    for (int side = 350; side <= kLargest; side += 50) {
        if (side % 100 == 0) {
            Register(side - 1);
        }
        Register(side);
    }
    Register(640);
}

}  // namespace Bench
