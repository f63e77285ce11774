// Embedded pictures are bytes from anywhere: each must become a cover within its limits, or none.

#include <cstdint>
#include <cstdlib>
#include <span>

#include "DeviceSimulator/PictureCodec.h"
#include "DeviceSimulator/PictureCover.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace DeviceSimulator;
    const auto cover = MakeCover(std::span(data, size));
    if (!cover) {
        return 0;
    }
    const auto header = ReadJpegHeader(cover->bytes);
    const bool isSound = header && header->common &&
                         header->size == PictureSize{cover->width, cover->height} &&
                         cover->bytes.size() <= kMaxCoverBytes &&
                         cover->bytes.size() <= std::uint64_t{2} * cover->width * cover->height;
    if (!isSound) {
        std::abort();
    }
    return 0;
}
