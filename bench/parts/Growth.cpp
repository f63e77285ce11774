// What large answers and many pictures leave behind.
//
//     bench_growth [CONVERSIONS]     10000 when left out
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "IpodService/AlbumArt.h"
#include "bench/Memory.h"
#include "bench/Result.h"
#include "bench/parts/Service.h"
#include "bench/pictures/Drawing.h"

namespace Bench {
namespace {

double ResidentMegabytes() {
    return StatusKilobytes("VmRSS:") * 1024 / 1e6;
}

void MeasureSongList() {
    Service& service = Service::Instance();
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";  // the peak starts anew
    const double before = ResidentMegabytes();
    const auto size = static_cast<double>(
        service.Execute("{\"jsonrpc\":\"2.0\",\"method\":\"getSongList\",\"id\":1}").size());
    const double peak = StatusKilobytes("VmHWM:") * 1024 / 1e6 - before;
    Report("song-list-peak", peak, size / 1e6);
    Report("song-list-after", ResidentMegabytes() - before);
}

void MeasureConversions(int count) {
    constexpr int kWarmUp = 500;
    constexpr int kSides[] = {640, 400, 700, 1000, 333};
    PictureLoader loader(PICTURE_MODULE);
    double before = 0;
    for (int i = 0; i < kWarmUp + count; ++i) {
        if (i == kWarmUp) {
            before = StatusKilobytes("RssAnon:");
        }
        const int side = kSides[i % 5];
        const Bytes jpeg = DrawCover(side, static_cast<unsigned>(i));
        ConvertAlbumArt({static_cast<u32>(side), static_cast<u32>(side), static_cast<u32>(jpeg.size()), jpeg},
                        loader);
    }
    Report("picture-growth", (StatusKilobytes("RssAnon:") - before) / 1024);
}

}  // namespace
}  // namespace Bench

int main(int count, char** words) {
    // Not on the main thread, whose heap is another kind than the one that the service works on.
    std::thread(Bench::MeasureSongList).join();
    Bench::MeasureConversions(count > 1 ? std::max(std::atoi(words[1]), 1) : 10000);
    return std::remove(Bench::kLogPath) == 0 ? 0 : 1;
}
