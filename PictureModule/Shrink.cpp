// The module's functions, by libvips.

#include <glib.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <vips/vips8>

#include "PictureModule/BoxFilter.h"
#include "PictureModule/PictureModule.h"

namespace {

constexpr int kRowsAtOnce = 16;

struct GFree {
    void operator()(void* memory) const { g_free(memory); }
};

struct BlobUnref {
    void operator()(VipsBlob* blob) const { vips_area_unref(VIPS_AREA(blob)); }
};

/// libvips collects the texts of failures until somebody takes them away.
struct ErrorBufferCleared {
    ErrorBufferCleared() = default;
    ErrorBufferCleared(const ErrorBufferCleared&) = delete;
    ErrorBufferCleared& operator=(const ErrorBufferCleared&) = delete;
    ~ErrorBufferCleared() { vips_error_clear(); }
};

}  // namespace

struct OpenPicture {
    vips::VImage image;  ///< whose pixels have not been read
    std::unique_ptr<void, GFree> thumbnail{};
};

namespace {

/// libvips holds so many rows at a time, which switches of a command line alone can set. Its own 128 are for
/// threads that take turns: here they would cost objects for every eight of them, and memory where rows are
/// long.
void HoldFewRows() {
    char program[] = "";
    char tiles[] = "--vips-tile-height=8";
    char strips[] = "--vips-fatstrip-height=8";
    char* arguments[] = {program, tiles, strips, nullptr};
    char** rest = arguments;
    int count = 3;
    GOptionGroup* const group = g_option_group_new("vips", "", "", nullptr, nullptr);
    vips_add_option_entries(group);
    const std::unique_ptr<GOptionContext, void (*)(GOptionContext*)> context(g_option_context_new(nullptr),
                                                                             g_option_context_free);
    g_option_context_set_main_group(context.get(), group);
    g_option_context_parse(context.get(), &count, &rest, nullptr);
}

bool Initialise() {
    // libvips looks there for decoders of other formats and loads some thirty libraries for them.
    g_setenv("VIPSHOME", "/dev/null", TRUE);
    if (VIPS_INIT("ipod") != 0) {
        return false;
    }
    // A cover is too small for threads to pay, and no picture comes twice.
    vips_concurrency_set(1);
    vips_cache_set_max(0);
    HoldFewRows();
    return true;
}

void InitialiseOnce() {
    static const bool isInitialised = Initialise();
    if (!isInitialised) {
        throw vips::VError();
    }
}

/// Reads the header and leaves the pixels for when they are asked for. The JPEG decoder by its name: what
/// goes by the content takes other formats as well.
vips::VImage OpenJpeg(PictureBytes bytes, int scale) {
    std::unique_ptr<VipsBlob, BlobUnref> blob(vips_blob_new(nullptr, bytes.data, bytes.size));
    return vips::VImage::jpegload_buffer(
        blob.get(), vips::VImage::option()->set("shrink", scale)->set("access", VIPS_ACCESS_SEQUENTIAL));
}

/// An image in memory with all that `from` has but its pixels, which are to be written row by row.
vips::VImage EmptyLike(const vips::VImage& from, PictureSize size) {
    vips::VImage image = vips::VImage::new_memory();
    if (vips_image_pipelinev(image.get_image(), VIPS_DEMAND_STYLE_ANY, from.get_image(), nullptr) != 0) {
        throw vips::VError();
    }
    image.get_image()->Xsize = size.width;
    image.get_image()->Ysize = size.height;
    return image;
}

/// Decodes on the calling thread, some rows at a time: the picture is never there as a whole.
vips::VImage ShrinkByBoxes(const vips::VImage& image, PictureSize pixels, BoxSize box) {
    vips::VImage thumbnail = EmptyLike(image, pixels);
    BoxFilter filter(pixels.width, image.bands(), box);
    vips::VRegion region = image.region();
    const int end = pixels.height * box.down;
    int written = 0;
    for (int top = 0; top < end; top += kRowsAtOnce) {
        const int rows = std::min(kRowsAtOnce, end - top);
        region.prepare(0, top, pixels.width * box.across, rows);
        for (int y = top; y < top + rows; ++y) {
            if (filter.Add(region.addr(0, y)) &&
                vips_image_write_line(thumbnail.get_image(), written++, filter.TakeAverages()) != 0) {
                throw vips::VError();
            }
        }
    }
    return thumbnail;
}

OpenPicture* Open(PictureBytes jpeg, int scale, PictureSize* size, PictureFailure* why) noexcept {
    try {
        InitialiseOnce();
        const ErrorBufferCleared cleared;
        auto picture = std::make_unique<OpenPicture>(OpenPicture{OpenJpeg(jpeg, scale)});
        *size = {picture->image.width(), picture->image.height()};
        return picture.release();
    } catch (const std::exception& error) {
        std::snprintf(why->reason, sizeof why->reason, "%s", error.what());
    }
    return nullptr;
}

PictureBytes Shrink(OpenPicture* picture, PictureSize pixels, BoxSize box) noexcept {
    try {
        const ErrorBufferCleared cleared;
        void* data = nullptr;
        std::size_t size = 0;
        const vips::VImage thumbnail = ShrinkByBoxes(picture->image, pixels, box);
        if (vips_jpegsave_buffer(thumbnail.get_image(), &data, &size, nullptr) == 0) {
            picture->thumbnail.reset(data);
            return {static_cast<const std::uint8_t*>(data), size};
        }
    } catch (const std::exception&) {
        // Told by the answer.
    }
    return {};
}

void Close(OpenPicture* picture) noexcept {
    delete picture;
}

}  // namespace

extern "C" const PictureModule kIpodPictureModule{.open = Open, .shrink = Shrink, .close = Close};
