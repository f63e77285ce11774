#include <algorithm>

#include "DeviceSimulator/media/PictureCover.h"
#include "LibraryTestFiles.h"

namespace DeviceSimulator {
namespace {

Bytes Padded(Bytes bytes, std::size_t size) {
    bytes.resize(std::max(size, bytes.size()));
    return bytes;
}

TEST(LibraryPictureTest, ACoverFitsItsRoomAndKeepsItsAspect) {
    struct Case {
        Bytes picture;
        bool passes;  ///< as it is
        ImageSize result;
    };
    const Case cases[] = {
        {MakeJpeg({1200, 900}), true, {1200, 900}},
        {Padded(MakeJpeg({64, 64}), 8192), true, {64, 64}},
        {Padded(MakeJpeg({64, 64}), 8193), false, {64, 64}},
        {Padded(MakeJpeg({1100, 1100}), kMostCoverBytes), true, {1100, 1100}},
        {Padded(MakeJpeg({1100, 1100}), kMostCoverBytes + 1), false, {640, 640}},
        {Padded(MakeJpeg({16, 1600}), 60000), false, {6, 640}},
        {MakePng({333, 999}), false, {213, 640}},
        {MakePng({8, 4}), false, {32, 16}},  // too small for any JPEG to fit twice its pixels
    };
    for (const Case& c : cases) {
        const auto cover = MakeCover(c.picture);
        ASSERT_TRUE(cover) << c.result.width;
        EXPECT_EQ(cover->bytes == c.picture, c.passes) << c.result.width;
        EXPECT_EQ((ImageSize{cover->width, cover->height}), c.result);
        EXPECT_EQ(SizeOf(cover->bytes), c.result);
        EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height) << c.result.width;
    }
}

}  // namespace
}  // namespace DeviceSimulator
