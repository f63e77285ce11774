// Embedded pictures are bytes from anywhere: each must become a cover within its limits, or none.

#include <cstdint>
#include <cstdlib>
#include <span>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/media/PictureCover.h"
#include "ServiceUtil/JpegCost.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace DeviceSimulator;
    const auto cover = MakeCover(std::span(data, size));
    if (!cover) {
        return 0;
    }
    const auto cost = ReadJpegCost(cover->bytes);
    const bool isSound = cost && (cost->components == 1 || cost->components == 3) &&
                         cost->width == cover->width && cost->height == cover->height &&
                         cover->bytes.size() <= kMostCoverBytes &&
                         cover->bytes.size() <= std::uint64_t{2} * cover->width * cover->height;
    if (!isSound) {
        std::abort();
    }
    return 0;
}
