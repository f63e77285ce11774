#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

#include "DeviceSimulator/PictureCodec.h"
#include "DeviceSimulator/PictureCover.h"
#include "tests/DeviceSimulator/LibraryTestFiles.h"

namespace DeviceSimulator {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes Padded(Bytes bytes, std::size_t size) {
    bytes.resize(std::max(size, bytes.size()));
    return bytes;
}

TEST(LibraryPicture, AJpegIsPassedOnOnlyWithinItsRoom) {
    struct Case {
        PictureSize size;
        std::size_t bytes;  ///< padded to that many
        bool passes;
        PictureSize result;
    };
    const std::vector<Case> cases{
        {{320, 320}, 0, true, {320, 320}},
        {{1200, 900}, 0, true, {1200, 900}},  // of any size in pixels
        {{64, 64}, 8192, true, {64, 64}},
        {{64, 64}, 8193, false, {64, 64}},
        {{1100, 1100}, kMaxCoverBytes, true, {1100, 1100}},
        {{1100, 1100}, kMaxCoverBytes + 1, false, {640, 640}},
        {{1100, 550}, 20000000, false, {640, 320}},
        {{16, 1600}, 60000, false, {6, 640}},
    };
    for (const Case& c : cases) {
        const Bytes jpeg = Padded(MakeJpeg(c.size), c.bytes);
        const auto cover = MakeCover(jpeg);
        ASSERT_TRUE(cover) << c.bytes;
        EXPECT_EQ(cover->bytes == jpeg, c.passes) << c.bytes;
        EXPECT_EQ((PictureSize{cover->width, cover->height}), c.result) << c.bytes;
        EXPECT_EQ(ReadJpegHeader(cover->bytes).value().size, c.result) << c.bytes;
        EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height) << c.bytes;
    }
}

TEST(LibraryPicture, APngBecomesAJpegOfTheSameAspect) {
    const std::vector<std::pair<PictureSize, PictureSize>> cases{
        {{300, 300}, {300, 300}},
        {{641, 641}, {640, 640}},
        {{1280, 640}, {640, 320}},
        {{333, 999}, {213, 640}},
        {{1, 2000}, {1, 640}},
        {{2000, 1}, {640, 1}},
        // Too small for any JPEG to fit twice their pixels: enlarged.
        {{1, 1}, {32, 32}},
        {{8, 4}, {32, 16}},
    };
    for (const auto& [size, result] : cases) {
        const auto cover = MakeCover(MakePng(size));
        if (std::min(result.width, result.height) == 1) {
            continue;  // whether a line has room for a JPEG is the encoder's affair; it must only not break
        }
        ASSERT_TRUE(cover) << size.width;
        EXPECT_EQ((PictureSize{cover->width, cover->height}), result) << size.width;
        EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height) << size.width;
    }
}

TEST(LibraryPicture, APictureKeepsItsColoursWhenItIsShrunk) {
    RgbImage image(PictureSize{1600, 800});
    for (std::size_t i = 0; i < image.pixels.size(); i += 3) {
        const bool isLeft = (i / 3) % 1600 < 800;
        image.pixels[i] = isLeft ? 200 : 20;
        image.pixels[i + 1] = 60;
        image.pixels[i + 2] = isLeft ? 30 : 220;
    }
    const auto cover = MakeCover(Padded(EncodeJpeg(image).value().bytes, 3000000));
    ASSERT_TRUE(cover);
    const auto small = DecodeJpeg(cover->bytes, {640, 320});
    ASSERT_TRUE(small);
    ASSERT_EQ(small->size, (PictureSize{640, 320}));
    const auto pixel = [&small](std::size_t x, std::size_t y) { return &small->pixels[3 * (y * 640 + x)]; };
    EXPECT_NEAR(pixel(100, 160)[0], 200, 6);
    EXPECT_NEAR(pixel(100, 160)[2], 30, 6);
    EXPECT_NEAR(pixel(500, 160)[0], 20, 6);
    EXPECT_NEAR(pixel(500, 160)[2], 220, 6);
}

TEST(LibraryPicture, WhatIsNoPictureIsNoCover) {
    const Bytes jpeg = MakeJpeg({300, 300});
    const Bytes png = MakePng({300, 300});
    Bytes lyingJpeg = jpeg;  // 65,500 x 65,500
    const std::array<std::uint8_t, 2> frame{0xFF, 0xC0};
    const auto head = std::search(lyingJpeg.begin(), lyingJpeg.end(), frame.begin(), frame.end());
    std::fill_n(head + 5, 4, std::uint8_t{0xFF});
    head[6] = head[8] = 0xDC;
    const std::vector<Bytes> cases{
        {},
        {0xFF},
        {0xFF, 0xD8, 0xFF},
        Bytes(1000, 0xFF),
        Bytes(1000, 'x'),
        Bytes(jpeg.begin(), jpeg.begin() + 100),
        Bytes(png.begin(), png.begin() + static_cast<std::ptrdiff_t>(png.size() / 2)),
        Bytes(png.begin(), png.begin() + 20),
        Padded(lyingJpeg, 3000000),
        MakePngClaiming({100000, 100000}),
        MakePngClaiming({8000, 8000}),
        MakePngClaiming({0, 10}),
        MakePngClaiming({100, 100}),
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_FALSE(MakeCover(cases[i])) << i;
    }
}

TEST(LibraryPicture, ADamagedBodyNeverBreaksTheDecoder) {
    const Bytes jpeg = Padded(MakeJpeg({200, 150}), 70000);
    const Bytes png = MakePng({100, 80});
    for (std::size_t at = 0; at < 600; ++at) {
        for (Bytes bytes : {jpeg, png}) {
            bytes[at] ^= static_cast<std::uint8_t>(1 + at % 255);
            if (const auto cover = MakeCover(bytes)) {
                EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height);
            }
        }
    }
}

}  // namespace
}  // namespace DeviceSimulator
