// From the device's picture to what clients get: at once, and from a later pass of the server loop.
#include "IpodService/AlbumArt.h"

#include <algorithm>
#include <random>
#include <vips/vips8>

#include "ServiceUtil/Base64.h"
#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using vips::VImage;

using Bytes = std::vector<u8>;

const std::vector<double> kColour{200, 30, 90};

Bytes Save(const VImage& image, const std::string& suffix) {
    void* memory = nullptr;
    std::size_t size = 0;
    image.write_to_buffer(suffix.c_str(), &memory, &size);
    const std::unique_ptr<void, decltype(&g_free)> owner(memory, g_free);
    return {static_cast<u8*>(memory), static_cast<u8*>(memory) + size};
}

Bytes Encode(int width, int height, const char* suffix = ".jpg") {
    return Save((VImage::black(width, height) + kColour).cast(VIPS_FORMAT_UCHAR), suffix);
}

/// Throws when the bytes are no picture.
VImage Decode(std::span<const u8> bytes) {
    return VImage::new_from_buffer(bytes.data(), bytes.size(), "").copy_memory();
}

VImage DecodeText(const std::string& base64) {
    const std::string bytes = DecodeBase64(base64).value();
    return Decode({reinterpret_cast<const u8*>(bytes.data()), bytes.size()});
}

/// By the image library alone, which rounds up: the last column and row may stand for pixels that are not all
/// there.
Bytes ShrinkPlainly(const Bytes& jpeg, int scale) {
    const VImage whole = Decode(jpeg);
    const int across = whole.width() / 100;
    const int down = whole.height() / 100;
    VipsBlob* const blob = vips_blob_new(nullptr, jpeg.data(), jpeg.size());
    const VImage image = VImage::jpegload_buffer(blob, VImage::option()->set("shrink", scale));
    vips_area_unref(VIPS_AREA(blob));
    const int restAcross = across / scale;
    const int restDown = down / scale;
    return Save(
        image.shrink(restAcross, restDown).extract_area(0, 0, whole.width() / across, whole.height() / down),
        ".jpg");
}

DeliveredPicture Delivered(const Bytes& bytes, u32 width, u32 height) {
    return {height, width, static_cast<u32>(bytes.size()), bytes};
}

class AlbumArtTest : public ManagerTest {
  protected:
    explicit AlbumArtTest(std::string pictureModule = PICTURE_MODULE)
        : ManagerTest(pictureModule), m_loader(std::move(pictureModule)) {
        EXPECT_EQ(VIPS_INIT("album_art_test"), 0);
        EXPECT_EQ(m_manager->RequestDelayedAlbumArt(), -1) << "no device";
        Connect();
        m_standIns.eDevMgriPodGetPlayingTrackAlbumArt = [this](u32, u32, u32* height, u32* width, u32 block) {
            ++m_asked;
            EXPECT_EQ(std::pair(*width, *height), std::pair(480u, 320u));
            std::tie(*width, *height) = m_size;
            if (block != 0) {
                std::copy(m_bytes.begin(), m_bytes.end(), reinterpret_cast<u8*>(std::uintptr_t{block}));
            }
            return m_code;
        };
        m_standIns.eDevMgriPodGetNumPlayingTracks = Giving(10u, 4u);
        UseStandIns();
    }

    /// What one pass reports after a request for the picture.
    Texts RequestAndPass() {
        EXPECT_EQ(m_manager->RequestDelayedAlbumArt(), 0);
        m_manager->ProcessDelayedAlbumArt();
        return m_notifications.Take();
    }

    AlbumArt Convert(const Bytes& bytes, u32 width, u32 height) {
        return ConvertAlbumArt(Delivered(bytes, width, height), m_loader);
    }

    PictureLoader m_loader;
    int m_asked = 0;
    Bytes m_bytes{'n', 'o', 'n', 'e'};
    std::pair<u32, u32> m_size{4, 0};  ///< as the device reports it: width, height
    u32 m_code = DEV_MGR_SUCCESS;
    std::string m_text = "as it was";
    u32 m_width = 7;
    u32 m_height = 8;
};

TEST_F(AlbumArtTest, PictureUpTo320RowsGoesOutByteForByte) {
    const Bytes bytes{0xFF, 0x00, 0xFE, '~'};
    for (const auto& [width, height] : {std::pair<u32, u32>{480, 320}, {5000, 320}, {4, 0}, {0, 4}}) {
        const AlbumArt art = Convert(bytes, width, height);
        EXPECT_EQ(art.bytes.data(), bytes.data());
        EXPECT_EQ(art.bytes.size(), bytes.size());
        EXPECT_EQ(std::pair(art.width, art.height), std::pair(width, height));
    }
    using Size = std::pair<u32, u32>;
    for (const auto& [size, reported] :
         {std::pair(Size{480, 320}, Size{480, 320}), {{480, 321}, {100, 100}}}) {
        m_size = size;
        m_bytes = Encode(480, static_cast<int>(size.second));
        m_text.clear();
        EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(m_text, m_width, m_height), 0);
        EXPECT_EQ(Size(m_width, m_height), reported);
        EXPECT_EQ(DecodeText(m_text).height(), size.second == 320 ? 320 : 107);
    }
}

TEST_F(AlbumArtTest, LargerPictureIsShrunkByWholeFactors) {
    using Size = std::pair<int, int>;
    const std::pair<Size, Size> cases[] = {{{480, 321}, {120, 107}},   {{640, 640}, {106, 106}},
                                           {{640, 480}, {106, 120}},   {{100, 321}, {100, 107}},
                                           {{500, 500}, {100, 100}},   {{700, 799}, {100, 114}},
                                           {{800, 800}, {100, 100}},   {{199, 999}, {199, 111}},
                                           {{1599, 1650}, {106, 103}}, {{4200, 4200}, {100, 100}}};
    for (const auto& [size, shrunk] : cases) {
        SCOPED_TRACE(testing::PrintToString(size));
        const Bytes jpeg = Encode(size.first, size.second);
        const AlbumArt art = Convert(jpeg, 1, static_cast<u32>(size.second));
        EXPECT_EQ(std::pair(art.width, art.height), std::pair(100u, 100u));
        const VImage picture = Decode(art.bytes);
        EXPECT_EQ(Size(picture.width(), picture.height()), shrunk);
        EXPECT_THAT(picture.getpoint(99, 99), testing::Pointwise(testing::DoubleNear(6), kColour));
    }
    EXPECT_EQ(vips_cache_get_max(), 0) << "every picture would stay in memory";
}

// Metadata, colours and all.
TEST_F(AlbumArtTest, ShrunkPictureIsTheImageLibrarysByteForByte) {
    const auto sameAsPlainly = [&](const Bytes& jpeg, int scale) {
        const AlbumArt art = Convert(jpeg, 1, 400);
        EXPECT_EQ(Bytes(art.bytes.begin(), art.bytes.end()), ShrinkPlainly(jpeg, scale));
    };
    auto noise = [random = std::minstd_rand()](int width, int height) mutable {
        Bytes pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<u8>(random() >> 8); });
        return VImage(vips_image_new_from_memory_copy(pixels.data(), pixels.size(), width, height, 1,
                                                      VIPS_FORMAT_UCHAR));
    };
    const struct { int width, height, scale; } sizes[] = {{640, 649, 2}, {500, 333, 1}, {807, 1650, 8}};
    for (const auto& [width, height, scale] : sizes) {
        SCOPED_TRACE(width);
        const VImage grey = noise(width, height).colourspace(VIPS_INTERPRETATION_B_W);
        const VImage colours = grey.bandjoin(grey.invert()).bandjoin(noise(width, height));
        sameAsPlainly(Save(grey, ".jpg"), scale);
        sameAsPlainly(
            Save(colours.copy(
                     VImage::option()->set("interpretation", VIPS_INTERPRETATION_sRGB)->set("xres", 5.0)),
                 ".jpg[Q=95]"),
            scale);
        sameAsPlainly(Save(colours.bandjoin(grey).copy(
                               VImage::option()->set("interpretation", VIPS_INTERPRETATION_CMYK)),
                           ".jpg"),
                      scale);
    }
}

TEST_F(AlbumArtTest, DamageIsAPartialPictureOrAFailure) {
    const Bytes whole = Encode(640, 640);
    const auto first = [&](std::size_t size) {
        return Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    };
    const Bytes half = first(whole.size() / 2);
    EXPECT_EQ(Decode(Convert(Encode(640, 640, ".jpg[interlace]"), 640, 640).bytes).width(), 106);
    EXPECT_EQ(Decode(Convert(half, 640, 640).bytes).width(), 106);

    Bytes claiming = Encode(16, 16);  // 65500 x 65500: hours and gigabytes to decode
    const u8 startOfFrame[] = {0xFF, 0xC0};
    const auto frame = std::search(claiming.begin(), claiming.end(), startOfFrame, startOfFrame + 2);
    const u8 hugeSize[] = {0xFF, 0xDC, 0xFF, 0xDC};
    std::copy_n(hugeSize, 4, frame + 5);
    // Next to it: no pictures, one cut in its header, one that is no JPEG, two too small to be divided.
    const Bytes failing[] = {
        claiming,        Bytes(1000),    Bytes(1, 0xFF), first(100), Encode(400, 400, ".ppm"),
        Encode(90, 400), Encode(400, 90)};
    for (std::size_t i = 0; i < std::size(failing); ++i) {
        EXPECT_THROW(Convert(failing[i], 400, 400), PictureError) << "case " << i;
        EXPECT_STREQ(vips_error_buffer(), "") << "case " << i;
    }
}

TEST_F(AlbumArtTest, WithoutItsModuleALargePictureIsOneThatCannotBeDecoded) {
    const Bytes large = Encode(480, 321);
    for (const auto& [path, reason] : {std::pair("/nowhere/pictures.so", "No such file"),
                                       {OTHER_PICTURE_MODULE, "of another version"},
                                       {"", "undefined symbol"}}) {
        PictureLoader loader(path);
        TakeLog();
        EXPECT_EQ(ConvertAlbumArt(Delivered(large, 480, 320), loader).height, 320u);
        EXPECT_THROW(ConvertAlbumArt(Delivered(Bytes(1000), 480, 321), loader), PictureError);
        const auto warns =
            testing::ContainsRegex("\\[WARN \\] Large pictures stay as they are. .*" + std::string(reason));
        EXPECT_THAT(TakeLog(), testing::Not(warns)) << "nothing to load it for";
        EXPECT_THROW(ConvertAlbumArt(Delivered(large, 480, 321), loader), PictureError);
        EXPECT_THAT(TakeLog(), warns);
        EXPECT_THROW(ConvertAlbumArt(Delivered(large, 480, 321), loader), PictureError);
        EXPECT_THAT(TakeLog(), testing::Not(warns)) << "once";
    }
}

TEST_F(AlbumArtTest, DelayedFetchByOutcome) {
    const struct {
        u32 code;
        std::pair<u32, u32> size;
        Texts reported;
        bool pending = false;
    } cases[] = {{DEV_MGR_SUCCESS, {4, 0}, {"art 8 4x0 5"}},
                 {DEV_MGR_SUCCESS, {1, 2}, {"art 8 1x2 5"}},
                 {DEV_MGR_SUCCESS, {480, 320}, {"art 409600 480x320 5"}},
                 {DEV_MGR_SUCCESS, {0, 0}, {"art 0 0x0 5"}},
                 {DEV_MGR_SUCCESS, {32768, 65536}, {"art 0 0x0 5"}},
                 {DEV_MGR_RESULT_NONE, {4, 0}, {"art 0 0x0 5"}},
                 {DEV_MGR_IAP_IPOD_IN_STOP_STATE, {}, {}, true},
                 {DEV_MGR_IAP_ARTWORK_NOT_SUPPORTED_BY_IPOD_ERROR, {}, {}},
                 {DEV_MGR_IAP_NOT_PLAYING_ERROR, {}, {}},
                 {DEV_MGR_IAP_FILE_NOT_PRESENT_ERROR, {}, {}, true}};
    m_manager->RequestPlayStatus();
    EXPECT_THAT(RequestAndPass(), IsEmpty()) << "the track info goes first";
    m_manager->UpdatePlayStatus();
    m_notifications.Take();
    for (const auto& [code, size, reported, pending] : cases) {
        m_code = code;
        m_size = size;
        EXPECT_EQ(RequestAndPass(), reported) << code;
        const int before = m_asked;
        m_manager->ProcessDelayedAlbumArt();
        EXPECT_EQ(m_asked > before, pending) << code;
        m_code = DEV_MGR_IAP_NOT_PLAYING_ERROR;
        m_manager->ProcessDelayedAlbumArt();
    }
    m_manager->RequestDelayedAlbumArt();
    m_manager->CloseDevice();
    m_asked = 0;
    m_manager->ProcessDelayedAlbumArt();
    EXPECT_EQ(m_asked, 0) << "nobody wants the picture of a device that is closed";
}

TEST_F(AlbumArtTest, ReadsStayWithinTheGrantedBlock) {
    m_bytes = Encode(640, 640);
    for (const auto& size : {std::pair<u32, u32>{2000, 2000}, {0xFFFFFFFF, 0}}) {
        m_size = size;
        m_text.clear();
        EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(m_text, m_width, m_height), 0);
    }
    EXPECT_EQ(m_text.size(), (0x200000u + 2) / 3 * 4);
    m_manager->FreeShm1();
    m_simulator.Fail("eDevMgrAllocateSharedMemory", DEV_MGR_UNKNOWN_FAILURE);
    m_asked = 0;
    EXPECT_THAT(RequestAndPass(), ElementsAre("art 0 0x0 5")) << "no memory for the block";
    EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(m_text, m_width, m_height), 0);
    EXPECT_EQ(m_asked, 0) << "there is nowhere to put a picture";
}

TEST_F(AlbumArtTest, ImmediateFetchLeavesItsArgumentsAloneWithoutAPicture) {
    for (const u32 code : {DEV_MGR_RESULT_NONE, DEV_MGR_IAP_ARTWORK_NOT_PRESENT_ERROR, DEV_MGR_IAP_APP_BUSY,
                           DEV_MGR_SUCCESS}) {
        m_code = code;
        m_size = {0, 0};
        EXPECT_EQ(m_manager->GetPlayingTrackAlbumArt(m_text, m_width, m_height),
                  static_cast<i32>(code == DEV_MGR_SUCCESS ? 0 : code));
        EXPECT_EQ(std::tie(m_text, m_width, m_height), std::tuple("as it was", 7u, 8u));
    }
    m_size = {2, 400};
    TakeLog();
    EXPECT_THROW(m_manager->GetPlayingTrackAlbumArt(m_text, m_width, m_height), PictureError);
    EXPECT_THAT(TakeLog(), testing::HasSubstr("[WARN ] Album art of 2 x 400 cannot be converted: "));
    EXPECT_THAT(RequestAndPass(), ElementsAre("art 2136 2x400 5")) << "as it is when delayed";
}

}  // namespace
