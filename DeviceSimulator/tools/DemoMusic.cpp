#include "DeviceSimulator/tools/DemoMusic.h"

#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "DeviceSimulator/music/CoverDrawing.h"
#include "DeviceSimulator/music/LibraryText.h"
#include "DeviceSimulator/tools/DemoMusicMelody.h"
#include "DeviceSimulator/tools/DemoMusicTags.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

namespace {

struct DemoAlbum {
    const char* artist;
    const char* album;
    const char* genre;
    const char* extension;
    std::uint32_t sampleRate;
    std::uint32_t firstSeconds;  ///< of the first track; each further one is two seconds longer
    std::uint32_t coverWidth;    ///< 0: none
    std::uint32_t coverHeight;
    const char* titles;  ///< '|' between them
    std::uint32_t discs = 1;
};

// The lossless ones are short, so that all of it stays small.
constexpr DemoAlbum kDemoAlbums[] = {
    {"The Gravel Choir", "First Rehearsal", "Folk", ".mp3", 44100, 12, 640, 640,
     "Warm-Up in D|The Stone Quarry|Seven Sparrows|Closing the Hall"},
    {"The Gravel Choir", "Encore, Unplanned", "Folk", ".flac", 44100, 5, 480, 480,
     "One More for the Caretaker|\"Again!\"|Lights Out"},
    {"Juno Petrakis", "Slow Circuits", "Electronic", ".ogg", 48000, 14, 320, 320,
     "Solder|Capacitor Hymn|12 Volts|afterglow"},
    {"Juno Petrakis", "B-Sides & Bicycles", "Electronic", ".mp3", 48000, 9, 0, 0,
     "Puncture Repair|Downhill, No Hands|Bell"},
    {"月見坂楽団", "夜明けの散歩道", "J-Pop", ".opus", 48000, 10, 300, 300,
     "夜明けの散歩道|猫と自動販売機|坂の上のラジオ"},
    {"Osric Vane", "Diary in Two Halves", "Singer-Songwriter", ".mp3", 44100, 16, 600, 300,
     "January Kettle|Attic Window|The Last Page", 2},
    {"Osric Vane", "Letters, Unsent", "Singer-Songwriter", ".m4a", 44100, 8, 500, 500,
     "Blotting Paper|Return to Sender|P.S."},
};

/// A PNG where the sound is not lossy either.
std::vector<DemoPicture> PicturesOf(const DemoAlbum& album) {
    constexpr int kQuality = 90;
    if (album.coverWidth == 0) {
        return {};
    }
    const RgbImage image = DrawCoverImage({album.coverWidth, album.coverHeight}, album.album, album.artist);
    const bool isPng = album.extension == std::string_view(".flac");
    return {{isPng ? EncodePng(image) : EncodeJpeg(image, kQuality).value_or(std::vector<std::uint8_t>())}};
}

/// Relative to the folder of the demo's music; plain characters only, for whatever lists it.
fs::path FileOf(std::size_t album, std::uint32_t number) {
    return fs::path("album-" + std::to_string(album + 1)) /
           ("track-" + std::to_string(number + 1) + kDemoAlbums[album].extension);
}

DemoError MakeAlbum(const fs::path& folder, std::size_t number) {
    const DemoAlbum& album = kDemoAlbums[number];
    const auto pictures = PicturesOf(album);
    const auto titles = Split(album.titles, '|');
    const auto perDisc = (static_cast<std::uint32_t>(titles.size()) + album.discs - 1) / album.discs;
    TrackTags tags;
    tags.artist = tags.albumArtist = tags.composer = album.artist;
    tags.album = album.album;
    tags.genre = album.genre;
    for (std::uint32_t track = 0; track < titles.size(); ++track) {
        tags.title = titles[track];
        tags.disc = track / perDisc + 1;
        tags.track = track % perDisc + 1;
        const fs::path path = folder / FileOf(number, track);
        const auto seed = static_cast<std::uint32_t>(4 * number + track);
        const auto melody = MakeMelody(seed, album.sampleRate, album.firstSeconds + 2 * track);
        if (auto error = EncodeFile(path, melody, album.sampleRate); !error.empty()) {
            return error;
        }
        if (!WriteTags(path, tags, pictures)) {
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
    for (std::size_t album = 0; album < std::size(kDemoAlbums); ++album) {
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
