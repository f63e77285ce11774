// Pictures decoded, made smaller and encoded; and where a JPEG ends.
#include "ServiceUtil/JpegImage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "ServiceUtil/JpegMarkers.h"

namespace {

using namespace std::string_literals;
using Bytes = std::vector<std::uint8_t>;

/// The left half is dark, the right one bright.
Bytes HalvedJpeg(ImageSize size) {
    RgbImage image(size);
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        image.pixels[i] = i / 3 % size.width < size.width / 2 ? 20 : 220;
    }
    return EncodeJpeg(image, 95).value();
}

TEST(JpegImageTest, IsMadeSmallInItsOwnProportions) {
    const struct {
        ImageSize stored;
        std::uint32_t longestSide;
        ImageSize decoded;
    } cases[] = {
        {{640, 640}, 640, {640, 640}},  {{641, 300}, 640, {640, 300}}, {{1000, 500}, 640, {640, 320}},
        {{500, 2000}, 640, {160, 640}}, {{3000, 8}, 640, {640, 2}},    {{16, 16}, 640, {16, 16}},
        {{3000, 2000}, 1, {1, 1}},
    };
    for (const auto& each : cases) {
        const auto image = DecodeJpeg(HalvedJpeg(each.stored), each.longestSide);
        ASSERT_TRUE(image) << each.stored.width;
        EXPECT_EQ(image->size, each.decoded) << image->size.width << " x " << image->size.height;
        ASSERT_EQ(image->pixels.size(), std::size_t{3} * each.decoded.width * each.decoded.height);
        if (each.decoded.width >= 16) {
            const std::uint32_t middle = each.decoded.height / 2;
            EXPECT_NEAR(*image->At(2, middle), 20, 12);
            EXPECT_NEAR(*image->At(each.decoded.width - 3, middle), 220, 12);
        }
    }
}

TEST(JpegImageTest, IsRefusedForItsCostAndKeptWithDamage) {
    Bytes jpeg = HalvedJpeg({200, 100});
    EXPECT_FALSE(DecodeJpeg(jpeg, 100, {.pixels = 19'999}));
    EXPECT_TRUE(DecodeJpeg(jpeg, 100, {.pixels = 20'000}));
    EXPECT_FALSE(DecodeJpeg({}, 100));
    EXPECT_FALSE(DecodeJpeg(jpeg, 0));
    Bytes padded = jpeg;
    padded.resize(padded.size() + 5000);
    EXPECT_TRUE(DecodeJpeg(padded, 100));
    jpeg.resize(jpeg.size() - 30);
    EXPECT_TRUE(DecodeJpeg(jpeg, 100)) << "what could be read of it";
    jpeg.resize(20);
    EXPECT_FALSE(DecodeJpeg(jpeg, 100));
    EXPECT_FALSE(EncodeJpeg(RgbImage(), 90));
    EXPECT_FALSE(EncodeJpeg(RgbImage(ImageSize{65'536, 1}), 90));
    EXPECT_TRUE(Resize(RgbImage(), {3, 3}).pixels.empty());
}

// What comes from a player has padding behind it, and may have a whole picture in its header.
TEST(JpegMarkersTest, APictureEndsAtItsOwnEndMarker) {
    const std::string head = "\xff\xd8\xff\xe1\x00\x08\xff\xd8\xff\xd9xx"s;             // a picture in it
    const std::string frame = "\xff\xc0\x00\x0b\x08\x00\x10\x01\x20\x01\x11\x00\x00"s;  // 288 x 16
    const std::string scan = "\xff\xda\x00\x03\x01"s;
    const std::string data = "\x12\xff\x00\x34\xff\xd0\x56"s;  // a stuffed byte, a restart
    const std::string tables = "\xff\xff\xc4\x00\x03\x01"s;    // between two scans, with a fill byte
    const std::string picture = head + frame + scan + data + tables + scan + data + "\xff\xd9";
    const std::string delivered = picture + "\0\0\xff\xd9padding"s;
    const Bytes bytes(delivered.begin(), delivered.end());
    const auto extent = MeasureJpeg(bytes);
    ASSERT_TRUE(extent && extent->isComplete);
    EXPECT_EQ(extent->length, picture.size());
    EXPECT_EQ((ImageSize{extent->width, extent->height}), (ImageSize{288, 16}));
    for (std::size_t length = 0; length < picture.size(); ++length) {
        const auto cut = MeasureJpeg(std::span(bytes).first(length));
        EXPECT_EQ(cut.has_value(), length >= 2);
        EXPECT_TRUE(!cut || (!cut->isComplete && cut->length == length)) << length;
    }
}

}  // namespace
