#include "IpodService/AlbumArt.h"

#include <optional>
#include <utility>

#include "ServiceUtil/JpegCost.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr u32 kResizeLimit = 320;    ///< pixels of height up to which a picture stays as it is
constexpr int kThumbnailSide = 100;  ///< pixels; also what is reported for every picture that was shrunk

using Picture = decltype(AlbumArt::shrunk);

/// Once decoding has begun there is no stopping it.
JpegCost RefuseWhatCostsTooMuch(std::span<const u8> bytes) {
    const std::optional<JpegCost> cost = ReadJpegCost(bytes);
    if (!cost || !cost->IsAffordable()) {
        throw PictureError("no picture to decode here");
    }
    return *cost;
}

const PictureModule& LoadModule(PictureLoader& loader) {
    const PictureModule* const module = loader.Module();
    if (module == nullptr) {
        throw PictureError("pictures cannot be shrunk here");
    }
    return *module;
}

/// The decoder divides by a part of the factors, which costs it less than decoding the whole, and the filter
/// by the rest.
struct ShrinkPlan {
    explicit ShrinkPlan(PictureSize from)
        : across(from.width / kThumbnailSide), down(from.height / kThumbnailSide), size(from) {
        for (const int divisor : {2, 4, 8}) {
            scale = CanDivide() && across % divisor == 0 && down % divisor == 0 ? divisor : scale;
        }
    }
    bool CanDivide() const { return across > 0 && down > 0; }
    PictureSize Decoded() const { return {size.width / scale, size.height / scale}; }
    PictureSize Thumbnail() const { return {size.width / across, size.height / down}; }
    BoxSize Box() const { return {across / scale, down / scale}; }

    int across;
    int down;
    PictureSize size;
    int scale = 1;
};

Picture Open(const PictureModule& module, std::span<const u8> bytes, const ShrinkPlan& plan) {
    PictureSize decoded;
    PictureFailure why;
    Picture picture(module.open({bytes.data(), bytes.size()}, plan.scale, &decoded, &why), module.close);
    if (!picture) {
        throw PictureError(why.reason);
    }
    if (decoded != plan.Decoded()) {
        throw PictureError("its size is not the one that its markers tell");
    }
    return picture;
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

AlbumArt AsDelivered(const DeliveredPicture& picture) {
    return {picture.bytes, picture.height, picture.width};
}

AlbumArt ConvertAlbumArt(const DeliveredPicture& picture, PictureLoader& loader) {
    LOG_INFO("Begin resizing. EncodeBase64 temp_size = %d\n",
             static_cast<int>(((picture.length + 2) / 3 + 1) * 4));
    if (picture.height <= kResizeLimit) {
        LOG_WARN("No resizing. EncodeBase64 dsize = %d\n", static_cast<int>(picture.length));
        return AsDelivered(picture);
    }
    const JpegCost cost = RefuseWhatCostsTooMuch(picture.bytes);
    const ShrinkPlan plan({static_cast<int>(cost.width), static_cast<int>(cost.height)});
    const PictureModule& module = LoadModule(loader);
    Picture opened = Open(module, picture.bytes, plan);
    LOG_INFO("Calling shrink\n");
    if (!plan.CanDivide()) {
        throw PictureError("one of its sides is too short to be divided");
    }
    const PictureBytes jpeg = module.shrink(opened.get(), plan.Thumbnail(), plan.Box());
    if (jpeg.data == nullptr) {
        return AsDelivered(picture);
    }
    LOG_INFO("Finished resizing image size to %d\n", static_cast<int>(jpeg.size));
    return {{jpeg.data, jpeg.size}, kThumbnailSide, kThumbnailSide, std::move(opened)};
}
