// The picture's marker walk runs over bytes from anywhere: it ends within them, and counts no fewer scans
// than the decoder does.

#include <csetjmp>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
// libjpeg's header needs stdio's types declared before it.
#include <jpeglib.h>

#include "ServiceUtil/JpegCost.h"

namespace {

struct Decoder {
    jpeg_decompress_struct info{};
    jpeg_error_mgr errors{};
    std::jmp_buf escape{};
    std::uint32_t width = 0;  ///< when the scans begin; the decoder reads a second one before it fails for it
    std::uint32_t height = 0;
    std::uint32_t scans = 0;
    bool heldWhole = false;
};

/// How many scans the decoder goes through, whatever it thinks of them. False: it did not come to the first.
bool CountScans(Decoder& decoder, const std::uint8_t* data, std::size_t size) {
    decoder.info.client_data = &decoder;
    decoder.info.err = jpeg_std_error(&decoder.errors);
    decoder.errors.error_exit = [](j_common_ptr info) {
        std::longjmp(static_cast<Decoder*>(info->client_data)->escape, 1);
    };
    decoder.errors.emit_message = [](j_common_ptr, int) {};
    if (setjmp(decoder.escape) != 0) {
        return decoder.scans > 0;
    }
    jpeg_create_decompress(&decoder.info);
    jpeg_mem_src(&decoder.info, data, static_cast<unsigned long>(size));
    jpeg_read_header(&decoder.info, TRUE);
    decoder.width = decoder.info.image_width;
    decoder.height = decoder.info.image_height;
    if (std::uint64_t{decoder.width} * decoder.height > 1 << 18) {
        return false;
    }
    decoder.info.buffered_image = TRUE;
    jpeg_start_decompress(&decoder.info);
    decoder.heldWhole = jpeg_has_multiple_scans(&decoder.info) != FALSE;
    decoder.scans = 1;
    while (jpeg_consume_input(&decoder.info) != JPEG_REACHED_EOI) {
        decoder.scans = static_cast<std::uint32_t>(decoder.info.input_scan_number);
    }
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::optional<JpegCost> cost = ReadJpegCost({data, size});
    if (!cost || !cost->IsAffordable() || cost->scans > 100) {
        return 0;
    }
    Decoder decoder;
    const bool decoded = CountScans(decoder, data, size);
    const bool isSound = !decoded || (cost->width == decoder.width && cost->height == decoder.height &&
                                      decoder.heldWhole == (cost->heldCoefficients > 0) &&
                                      (!decoder.heldWhole || cost->scans >= decoder.scans));
    jpeg_destroy_decompress(&decoder.info);
    if (!isSound) {
        std::abort();
    }
    return 0;
}
