#include "IpodService/AlbumArt.h"

#include <glib.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <optional>
#include <vips/vips8>

#include "ServiceUtil/Base64.h"
#include "ServiceUtil/JpegCost.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr u32 kResizeLimit = 320;    ///< pixels of height up to which a picture stays as it is
constexpr int kThumbnailSide = 100;  ///< pixels; also what is reported for every picture that was shrunk

struct GFree {
    void operator()(void* memory) const { g_free(memory); }
};

struct BlobUnref {
    void operator()(VipsBlob* blob) const { vips_area_unref(VIPS_AREA(blob)); }
};

struct JpegBytes {
    std::unique_ptr<void, GFree> data;
    size_t size = 0;
};

/// libvips collects the texts of failures until somebody takes them away.
struct ErrorBufferCleared {
    ErrorBufferCleared() = default;
    ErrorBufferCleared(const ErrorBufferCleared&) = delete;
    ErrorBufferCleared& operator=(const ErrorBufferCleared&) = delete;
    ~ErrorBufferCleared() { vips_error_clear(); }
};

struct ShrinkFactors {
    int x;
    int y;
    bool CanDivide() const { return x > 0 && y > 0; }
};

// Takes some 20 ms and 9 MB, so not before there is a picture to shrink.
void InitialiseVips() {
    static std::once_flag once;
    std::call_once(once, [] {
        if (VIPS_INIT("ipod") != 0) {
            throw vips::VError();
        }
        // A cover is too small for threads to pay, and no picture comes twice.
        vips_concurrency_set(1);
        vips_cache_set_max(0);
    });
}

/// Reads the header and leaves the pixels for when they are asked for. The JPEG decoder by its name: what
/// goes by the content takes other formats as well.
vips::VImage OpenJpeg(std::span<const u8> bytes, int scale) {
    std::unique_ptr<VipsBlob, BlobUnref> blob(vips_blob_new(nullptr, bytes.data(), bytes.size()));
    return vips::VImage::jpegload_buffer(
        blob.get(), vips::VImage::option()->set("shrink", scale)->set("access", VIPS_ACCESS_SEQUENTIAL));
}

/// What the decoder can divide by while it decodes, which costs it less than decoding the whole does.
int ScaleOnLoad(const ShrinkFactors& factors) {
    for (int scale : {8, 4, 2}) {
        if (factors.CanDivide() && factors.x % scale == 0 && factors.y % scale == 0) {
            return scale;
        }
    }
    return 1;
}

/// Once decoding has begun there is no stopping it.
void RefuseWhatCostsTooMuch(std::span<const u8> bytes) {
    const std::optional<JpegCost> cost = ReadJpegCost(bytes);
    if (!cost || !cost->IsAffordable()) {
        throw vips::VError("no picture to decode here");
    }
}

vips::VImage Shrink(std::span<const u8> bytes) {
    vips::VImage image = OpenJpeg(bytes, 1);
    const int width = image.width();
    const int height = image.height();
    const ShrinkFactors factors{width / kThumbnailSide, height / kThumbnailSide};
    const int scale = ScaleOnLoad(factors);
    if (scale > 1) {
        image = OpenJpeg(bytes, scale);
    }

    LOG_INFO("Calling shrink\n");
    const int restX = factors.x / scale;
    const int restY = factors.y / scale;
    vips::VImage shrunk = image.shrink(restX, restY);
    if (!factors.CanDivide()) {
        return shrunk;
    }
    // libvips rounds up: the last column and row would stand for pixels that are not all there.
    return shrunk.extract_area(0, 0, std::min(width / factors.x, shrunk.width()),
                               std::min(height / factors.y, shrunk.height()));
}

/// Nothing when the picture could not be decoded or encoded to its end.
std::optional<JpegBytes> SaveJpeg(const vips::VImage& image) {
    void* data = nullptr;
    size_t size = 0;
    if (vips_jpegsave_buffer(image.get_image(), &data, &size, nullptr) != 0) {
        return std::nullopt;
    }
    return JpegBytes{std::unique_ptr<void, GFree>(data), size};
}

}  // namespace

u32 AlbumArtLength(u32 height, u32 width) {
    if (height == 0) {
        return width;
    }
    if (width == 0) {
        return height;
    }
    return width * height * 2;
}

AlbumArt EncodeAsDelivered(const DeliveredPicture& picture) {
    return {EncodeBase64(picture.bytes), picture.height, picture.width};
}

AlbumArt ConvertAlbumArt(const DeliveredPicture& picture) {
    LOG_INFO("Begin resizing. EncodeBase64 temp_size = %d\n",
             static_cast<int>(((picture.length + 2) / 3 + 1) * 4));
    if (picture.height <= kResizeLimit) {
        LOG_WARN("No resizing. EncodeBase64 dsize = %d\n", static_cast<int>(picture.length));
        return EncodeAsDelivered(picture);
    }
    RefuseWhatCostsTooMuch(picture.bytes);
    InitialiseVips();
    const ErrorBufferCleared cleared;
    const std::optional<JpegBytes> jpeg = SaveJpeg(Shrink(picture.bytes));
    if (!jpeg) {
        return EncodeAsDelivered(picture);
    }
    LOG_INFO("Finished resizing image size to %d\n", static_cast<int>(jpeg->size));
    return {EncodeBase64({static_cast<const u8*>(jpeg->data.get()), jpeg->size}), kThumbnailSide,
            kThumbnailSide};
}
