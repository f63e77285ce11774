// From picture bytes to the text that clients get.
#include "IpodService/AlbumArt.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vips/vips8>

#include "tests/IpodService/ManagerFixture.h"
#include "tests/IpodService/TestPictures.h"

namespace {

using testing::HasSubstr;
using testing::Not;

DeliveredPicture Delivered(const PictureBytes& bytes, u32 width, u32 height) {
    return {height, width, static_cast<u32>(bytes.size()), bytes};
}

TEST(AlbumArtTest, LengthComesFromTheReportedSize) {
    struct {
        u32 height;
        u32 width;
        u32 length;
    } const cases[] = {
        {0, 0, 0},
        {0, 1234, 1234},
        {777, 0, 777},
        {320, 480, 307200},
        {65536, 32768, 0},
        {2000, 2000, 8000000},
        {0xFFFFFFFF, 0, 0xFFFFFFFF},
    };
    for (const auto& [height, width, length] : cases)
        EXPECT_EQ(AlbumArtLength(height, width), length) << height << " x " << width;
}

TEST(AlbumArtTest, PictureUpToTheLimitStaysAsItIs) {
    const PictureBytes noPicture{'n', 'o', 'n', 'e'};
    for (const auto& [width, height] : {std::pair<u32, u32>{480, 320}, {5000, 320}, {4, 0}, {0, 4}}) {
        const AlbumArt art = ConvertAlbumArt(Delivered(noPicture, width, height));
        EXPECT_EQ(art.text, "bm9uZQ==");
        EXPECT_EQ(art.width, width);
        EXPECT_EQ(art.height, height);
    }
}

TEST(AlbumArtTest, LargerPictureIsShrunkByWholeFactors) {
    struct {
        int width;
        int height;
        int shrunkWidth;
        int shrunkHeight;
    } const cases[] = {
        {480, 321, 120, 107}, {640, 640, 106, 106},   {640, 480, 106, 120}, {100, 321, 100, 107},
        {500, 500, 100, 100}, {700, 799, 100, 114},   {800, 800, 100, 100}, {1200, 1200, 100, 100},
        {199, 999, 199, 111}, {1599, 1650, 106, 103},
    };
    for (const auto& [width, height, shrunkWidth, shrunkHeight] : cases) {
        SCOPED_TRACE(testing::Message() << width << " x " << height);
        const PictureBytes jpeg = MakeJpeg(width, height);
        const AlbumArt art =
            ConvertAlbumArt(Delivered(jpeg, static_cast<u32>(width), static_cast<u32>(height)));
        EXPECT_EQ(art.width, 100U);
        EXPECT_EQ(art.height, 100U);
        const std::optional<DecodedPicture> picture = DecodeBase64Jpeg(art.text);
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->width, shrunkWidth);
        EXPECT_EQ(picture->height, shrunkHeight);

        const DecodedPicture original = *DecodeBase64Jpeg(EncodeAsDelivered(Delivered(jpeg, 0, 0)).text);
        // Away from the fields' edges, which ring in the encoder's blocks of 16.
        for (const auto& [x, y] : {std::pair{10, 10}, {90, 10}, {10, 90}, {90, 90}, {35, 35}, {75, 75}})
            for (size_t channel = 0; channel < 3; ++channel)
                EXPECT_NEAR(picture->ColourAt(x, y)[channel], original.ColourAt(x, y)[channel], 6);
    }
}

TEST(AlbumArtTest, DamageIsAPartialPictureOrAFailure) {
    const PictureBytes whole = MakeJpeg(640, 640);
    const PictureBytes half(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(whole.size() / 2));
    PictureBytes padded = whole;
    padded.resize(2 * whole.size() + 1);
    for (const PictureBytes& bytes : {half, padded}) {
        const std::optional<DecodedPicture> picture =
            DecodeBase64Jpeg(ConvertAlbumArt(Delivered(bytes, 640, 640)).text);
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->width, 106);
        EXPECT_EQ(picture->height, 106);
    }

    const PictureBytes failing[] = {
        PictureBytes(1000),                                // zeros
        PictureBytes(1, 0xFF),                             //
        PictureBytes(whole.begin(), whole.begin() + 100),  // cut in the header
        MakePng(400, 400),                                 // a picture, but no JPEG
        MakeJpeg(90, 400),                                 // nothing to divide the width by
        MakeJpeg(400, 90),                                 //
        MakeJpegClaiming(65500, 65500),                    // hours and gigabytes to decode
    };
    for (size_t i = 0; i < std::size(failing); ++i) {
        EXPECT_THROW(ConvertAlbumArt(Delivered(failing[i], 400, 400)), vips::VError) << "case " << i;
        EXPECT_STREQ(vips_error_buffer(), "") << "case " << i;
    }
    EXPECT_EQ(ConvertAlbumArt(Delivered(whole, 640, 640)).width, 100U) << "after the failures";
}

TEST(AlbumArtTest, LogTellsTheComputedLength) {
    const ScratchFolder scratch;
    CapturedLog log(scratch.Path() / "log");
    const PictureBytes bytes(8);
    ConvertAlbumArt({320, 480, 307200, bytes});
    EXPECT_EQ(log.Take(),
              "[INFO ] Begin resizing. EncodeBase64 temp_size = 409604\n"
              "[WARN ] No resizing. EncodeBase64 dsize = 307200\n");
    ConvertAlbumArt({0, 0xFFFFFFFF, 0xFFFFFFFF, bytes});
    EXPECT_EQ(log.Take(),
              "[INFO ] Begin resizing. EncodeBase64 temp_size = 4\n"
              "[WARN ] No resizing. EncodeBase64 dsize = -1\n");
    const AlbumArt art = ConvertAlbumArt(Delivered(MakeJpeg(640, 640), 640, 640));
    EXPECT_THAT(log.Take(), HasSubstr("[INFO ] Calling shrink\n[INFO ] Finished resizing image size to " +
                                      std::to_string(DecodeBase64(art.text).size()) + "\n"));
    EXPECT_THROW(ConvertAlbumArt({400, 400, 8, bytes}), vips::VError);
    EXPECT_THAT(log.Take(), Not(HasSubstr("Calling shrink")));
}

}  // namespace
