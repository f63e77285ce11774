// What a JPEG's markers tell of its cost, told from pictures put together by hand.
#include "ServiceUtil/JpegCost.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <tuple>
#include <vector>

namespace {

using u8 = std::uint8_t;
using u32 = std::uint32_t;
using Bytes = std::vector<u8>;

constexpr u8 kBaseline = 0xC0;
constexpr u8 kProgressive = 0xC2;
constexpr u8 kComment = 0xFE;
constexpr u8 kExif = 0xE1;
constexpr u8 kTables = 0xC4;

const Bytes kStart{0xFF, 0xD8};
const Bytes kEnd{0xFF, 0xD9};

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Segment(u8 marker, const Bytes& content) {
    const std::size_t length = content.size() + 2;
    return Bytes{0xFF, marker, static_cast<u8>(length >> 8), static_cast<u8>(length)} + content;
}

struct Size {
    u32 width = 640;
    u32 height = 640;
};

Bytes Frame(u8 marker, const Bytes& samplings, Size size = {}, u8 precision = 8) {
    Bytes content{precision,
                  static_cast<u8>(size.height >> 8),
                  static_cast<u8>(size.height),
                  static_cast<u8>(size.width >> 8),
                  static_cast<u8>(size.width),
                  static_cast<u8>(samplings.size())};
    for (const u8 sampling : samplings) {
        content = content + Bytes{1, sampling, 0};
    }
    return Segment(marker, content);
}

Bytes Scan(u8 components = 1) {
    return Segment(0xDA, Bytes{components} + Bytes(components * 2U + 3)) + Bytes{0x12, 0xFF, 0x00, 0xDA};
}

/// From a copy that ends where the bytes end, so that reading on is seen.
std::optional<JpegCost> CostOf(const Bytes& bytes) {
    const auto exact = std::make_unique<u8[]>(bytes.size());
    std::copy(bytes.begin(), bytes.end(), exact.get());
    return ReadJpegCost({exact.get(), bytes.size()});
}

TEST(JpegCostTest, TellsLineByLineFromHeldWhole) {
    const Bytes halved{0x22, 0x11, 0x11};
    const struct {
        Bytes picture;
        Size size;
        std::uint64_t held;
        u32 scans;
    } cases[] = {
        {Frame(kBaseline, halved) + Scan(3), {640, 640}, 0, 1},
        {Frame(0xC1, {0x11}, {40, 300}) + Scan(), {40, 300}, 0, 1},
        {Frame(kBaseline, halved) + Scan() + Scan() + Scan(), {640, 640}, 614400, 3},
        {Frame(kBaseline, halved) + Scan(2) + Scan(3), {640, 640}, 614400, 2},
        {Frame(kProgressive, halved) + Scan(3), {640, 640}, 614400, 1},
        {Frame(kProgressive, {0x11, 0x11, 0x11}) + Scan(3), {640, 640}, 1228800, 1},
        // 82 x 2 blocks, of which the last column is filling, and twice 41 x 1.
        {Frame(kProgressive, halved, {641, 9}) + Scan(3), {641, 9}, 15744, 1},
        {Frame(kProgressive, {0x44, 0x11}, {65535, 1}) + Scan(2),
         {65535, 1},
         std::uint64_t{64} * (8192 * 4 + 2048),
         1},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto cost = CostOf(kStart + cases[i].picture);
        ASSERT_TRUE(cost) << "case " << i;
        EXPECT_EQ(std::tie(cost->width, cost->height, cost->heldCoefficients, cost->scans),
                  std::tie(cases[i].size.width, cases[i].size.height, cases[i].held, cases[i].scans))
            << "case " << i;
    }
}

TEST(JpegCostTest, CountsWhatADecoderMeetsAndNothingElse) {
    const Bytes frame = Frame(kProgressive, {0x11});
    const Bytes thumbnail = kStart + Frame(kBaseline, {0x11}, {8, 8}) + Scan() + kEnd;
    const std::pair<u32, Bytes> cases[] = {
        {2, Segment(kExif, thumbnail) + frame + Scan() + Segment(kComment, thumbnail) + Scan()},
        {2, Bytes{0xFF, 0xFF} + frame + Scan() + Bytes{0xFF, 0xFF} + Scan()},  // fill bytes
        {2, frame + Scan() + Bytes{0xFF, 0xD7, 0x55, 0xFF, 0xD0} + Scan()},    // restarts
        {2, frame + Scan() + Bytes{0xFF, 0x01, 0xFF, 0xBF} + Scan()},          // a decoder may go on
        {2, frame + Scan() + Segment(kTables, kEnd) + Scan() + kEnd},
        {1, frame + Scan() + kEnd + Scan()},                               // of the picture before
        {2, frame + Scan() + Bytes{0xFF, kComment, 0, 0} + Scan()},        // a length below its own
        {1, frame + Scan() + Bytes{0xFF, kComment, 0xFF, 0xFF} + Scan()},  // and one beyond the end
        {2, frame + Scan() + Bytes{0xFF, 0xDA}},                           // cut
        {1, frame + Scan() + Bytes{0xFF}},
        {1, frame + Scan() + Frame(kProgressive, {0x11}, {9, 9})},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto cost = CostOf(kStart + cases[i].second);
        ASSERT_TRUE(cost) << "case " << i;
        EXPECT_EQ(cost->scans, cases[i].first) << "case " << i;
        EXPECT_EQ(cost->width, 640u) << "case " << i;
    }
}

TEST(JpegCostTest, NoneForWhatIsNotDecodedHere) {
    const Bytes good = Frame(kBaseline, {0x11, 0x11, 0x11});
    std::vector<Bytes> cases{
        good + Scan(3),  // all that follows has a start
        kStart + Scan(3) + good + Scan(3),
        kStart + kEnd + good + Scan(3),
        kStart + Frame(kBaseline, {0x11}, {640, 640}, 12) + Scan(),
        kStart + Frame(kBaseline, {}) + Scan(0),
        kStart + Frame(kBaseline, {0x11}, {0, 640}) + Scan(),
        kStart + Frame(kBaseline, {0x11}, {640, 0}) + Scan(),
        kStart + Segment(kBaseline, {8, 1, 0, 1, 0, 2, 1, 0x11, 0}) + Scan(),  // a component is missing
    };
    for (const u8 sampling : Bytes{0x01, 0x10, 0x51, 0x15}) {
        cases.push_back(kStart + Frame(kBaseline, {0x11, sampling}) + Scan(2));
    }
    // Lossless, hierarchical, arithmetic
    for (const u8 kind : Bytes{0xC3, 0xC5, 0xC6, 0xC7, 0xC9, 0xCA, 0xCB, 0xCD, 0xCE, 0xCF}) {
        cases.push_back(kStart + Frame(kind, {0x11, 0x11, 0x11}) + Scan(3));
    }
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_FALSE(CostOf(cases[i])) << "case " << i;
    }
    const Bytes header = kStart + Segment(kTables, Bytes(20)) + good;
    for (std::size_t size = 0; size <= header.size(); ++size) {
        EXPECT_FALSE(CostOf({header.begin(), header.begin() + static_cast<std::ptrdiff_t>(size)})) << size;
    }
}

TEST(JpegCostTest, IsAffordableUpToItsLimits) {
    constexpr std::uint64_t kMostHeld = 24 << 20;
    const std::pair<JpegCost, bool> cases[] = {
        {{8192, 8192, 0, 1}, true},           {{8192, 8193, 0, 1}, false},
        {{16384, 4096, 0, 1000000}, true},    {{16385, 100, 0, 1}, false},
        {{1024, 65535, 0, 1}, true},          {{4096, 4096, kMostHeld, 10}, true},
        {{4096, 4096, kMostHeld, 11}, false}, {{4096, 4096, kMostHeld + 64, 1}, false},
        {{640, 640, 614400, 409}, true},      {{640, 640, 614400, 410}, false},
        {{8192, 8192, 1 << 16, 1}, true},     {{640, 640, kMostHeld, 0xFFFFFFFF}, false}};
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        EXPECT_EQ(cases[i].first.IsAffordable(), cases[i].second) << "case " << i;
    }
}

}  // namespace
