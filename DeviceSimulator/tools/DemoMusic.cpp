#include "DeviceSimulator/tools/DemoMusic.h"

#include <png.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <optional>

#include "DeviceSimulator/CoverDrawing.h"
#include "DeviceSimulator/tools/DemoMusicMelody.h"
#include "DeviceSimulator/tools/DemoMusicTags.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

enum class PictureFormat : std::uint8_t { kNone, kJpeg, kPng };

struct DemoAlbum {
    const char* artist;
    const char* album;
    const char* genre;
    const char* composer;
    const char* extension;
    std::uint32_t sampleRate;
    std::uint32_t firstSeconds;  ///< of the first track; each further one is two seconds longer
    PictureFormat format;
    PictureSize size;
    std::array<const char*, 4> titles;  ///< null: no further one
    std::uint32_t discs = 1;
};

// The lossless ones are short, so that all of it stays small.
constexpr std::array<DemoAlbum, 7> kDemoAlbums{{
    {"The Gravel Choir",
     "First Rehearsal",
     "Folk",
     "H. Tolliver",
     ".mp3",
     44100,
     12,
     PictureFormat::kJpeg,
     {640, 640},
     {"Warm-Up in D", "The Stone Quarry", "Seven Sparrows", "Closing the Hall"}},
    {"The Gravel Choir",
     "Encore, Unplanned",
     "Folk",
     "H. Tolliver",
     ".flac",
     44100,
     5,
     PictureFormat::kPng,
     {480, 480},
     {"One More for the Caretaker", "\"Again!\"", "Lights Out", nullptr}},
    {"Juno Petrakis",
     "Slow Circuits",
     "Electronic",
     "",
     ".ogg",
     48000,
     14,
     PictureFormat::kJpeg,
     {320, 320},
     {"Solder", "Capacitor Hymn", "12 Volts", "afterglow"}},
    {"Juno Petrakis",
     "B-Sides & Bicycles",
     "Electronic",
     "",
     ".mp3",
     48000,
     9,
     PictureFormat::kNone,
     {},
     {"Puncture Repair", "Downhill, No Hands", "Bell", nullptr}},
    {"月見坂楽団",
     "夜明けの散歩道",
     "J-Pop",
     "小野寺さやか",
     ".opus",
     48000,
     10,
     PictureFormat::kPng,
     {300, 300},
     {"夜明けの散歩道", "猫と自動販売機", "坂の上のラジオ", nullptr}},
    {"Osric Vane",
     "Diary in Two Halves",
     "Singer-Songwriter",
     "Osric Vane",
     ".mp3",
     44100,
     16,
     PictureFormat::kJpeg,
     {600, 300},
     {"January Kettle", "Attic Window", "The Last Page", nullptr},
     2},
    {"Osric Vane",
     "Letters, Unsent",
     "Singer-Songwriter",
     "Osric Vane",
     ".m4a",
     44100,
     8,
     PictureFormat::kJpeg,
     {500, 500},
     {"Blotting Paper", "Return to Sender", "P.S.", nullptr}},
}};

std::optional<std::vector<std::uint8_t>> EncodePng(const RgbImage& image) {
    png_image head{};
    head.version = PNG_IMAGE_VERSION;
    head.width = image.size.width;
    head.height = image.size.height;
    head.format = PNG_FORMAT_RGB;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_PNG_SIZE_MAX(head));
    png_alloc_size_t size = bytes.size();
    if (png_image_write_to_memory(&head, bytes.data(), &size, 0, image.pixels.data(), 0, nullptr) == 0) {
        return std::nullopt;
    }
    bytes.resize(size);
    return bytes;
}

std::vector<DemoPicture> PicturesOf(const DemoAlbum& album) {
    if (album.format == PictureFormat::kNone) {
        return {};
    }
    const RgbImage image = DrawCoverImage(album.size, album.album, album.artist);
    if (album.format == PictureFormat::kPng) {
        auto png = EncodePng(image);
        return png ? std::vector<DemoPicture>{{std::move(*png), true}} : std::vector<DemoPicture>{};
    }
    auto jpeg = EncodeJpeg(image);
    return jpeg ? std::vector<DemoPicture>{{std::move(jpeg->bytes), true}} : std::vector<DemoPicture>{};
}

std::uint32_t TitleCount(const DemoAlbum& album) {
    return album.titles.back() == nullptr ? 3 : 4;
}

TrackTags TagsOf(const DemoAlbum& album, std::uint32_t number) {
    const std::uint32_t perDisc = (TitleCount(album) + album.discs - 1) / album.discs;
    TrackTags tags;
    tags.title = album.titles[number];
    tags.artist = album.artist;
    tags.album = album.album;
    tags.albumArtist = album.artist;
    tags.genre = album.genre;
    tags.composer = album.composer;
    tags.disc = number / perDisc + 1;
    tags.track = number % perDisc + 1;
    return tags;
}

/// Relative to the folder of the demo's music; plain characters only, for whatever lists it.
fs::path FileOf(std::size_t album, std::uint32_t number) {
    return fs::path("album-" + std::to_string(album + 1)) /
           ("track-" + std::to_string(number + 1) + kDemoAlbums[album].extension);
}

DemoError MakeAlbum(const fs::path& folder, std::size_t number) {
    const DemoAlbum& album = kDemoAlbums[number];
    const auto pictures = PicturesOf(album);
    for (std::uint32_t track = 0; track < TitleCount(album); ++track) {
        const fs::path path = folder / FileOf(number, track);
        const auto seed = static_cast<std::uint32_t>(4 * number + track);
        const auto melody = MakeMelody(seed, album.sampleRate, album.firstSeconds + 2 * track);
        if (auto error = EncodeFile(path, melody, album.sampleRate); !error.empty()) {
            return error;
        }
        if (!WriteTags(path, TagsOf(album, track), pictures)) {
            return "Cannot write the tags of " + path.string();
        }
    }
    return {};
}

DemoError MakePlaylist(const fs::path& folder) {
    const fs::path path = folder / "Evening Drive.m3u8";
    std::ofstream file(path, std::ios::binary);
    file << "#EXTM3U\n# Across all formats; the second track comes twice.\n";
    for (const auto& [album, track] :
         {std::pair{3U, 1U}, {0U, 2U}, {4U, 1U}, {2U, 3U}, {0U, 2U}, {5U, 0U}, {6U, 2U}}) {
        file << FileOf(album, track).native() << '\n';
    }
    file.close();
    return file ? DemoError() : "Cannot write " + path.string();
}

}  // namespace

DemoError MakeDemoMusic(const fs::path& folder) {
    if (auto error = CheckEncoders(); !error.empty()) {
        return error;
    }
    for (std::size_t album = 0; album < kDemoAlbums.size(); ++album) {
        std::error_code error;
        const fs::path albumFolder = folder / FileOf(album, 0).parent_path();
        fs::create_directories(albumFolder, error);
        if (error) {
            return "Cannot make the folder " + albumFolder.string() + ": " + error.message();
        }
        if (auto problem = MakeAlbum(folder, album); !problem.empty()) {
            return problem;
        }
    }
    return MakePlaylist(folder);
}

}  // namespace DeviceSimulator
