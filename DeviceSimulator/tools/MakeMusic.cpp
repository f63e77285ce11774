// make-demo-music <folder>: a small set of music files for demonstrations and tests: seven albums (23 tracks
// of 5 to 20 seconds in five formats, with tags and pictures) and a playlist. The same sound and tags at
// every call.

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "DeviceSimulator/music/CoverDrawing.h"
#include "DeviceSimulator/music/LibraryRandom.h"
#include "DeviceSimulator/music/LibraryText.h"
#include "DeviceSimulator/tools/DemoMusicTags.h"
#include "DeviceSimulator/tools/ToneFile.h"

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

/// A little tune; the same one for the same `seed`.
std::string WriteMelody(const fs::path& path, std::uint32_t seed, std::uint32_t rate, std::uint32_t seconds) {
    // Any walk over these notes, in semitones, sounds like one.
    constexpr std::array<int, 13> kNotes{0, 2, 4, 7, 9, 12, 14, 16, 19, 21, 24, 26, 28};
    constexpr std::uint32_t kNotesASecond = 4;
    LibraryRandom random(std::uint64_t{seed});
    const double root = 220.0 * std::exp2(random.Below(12) / 12.0);
    std::uint32_t note = 5;
    std::vector<double> hertz(std::size_t{seconds} * kNotesASecond);
    for (double& tone : hertz) {
        // Up to two steps down or up.
        note = std::min<std::uint32_t>(kNotes.size() - 1, std::max(note, 2U) - 2 + random.Below(5));
        tone = root * std::exp2(kNotes[note] / 12.0);
    }
    return WriteToneFile(path, rate, hertz, rate / kNotesASecond);
}

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

/// What is wrong, for a person; empty: nothing.
std::string MakeAlbum(const fs::path& folder, std::size_t number) {
    const DemoAlbum& album = kDemoAlbums[number];
    fs::create_directories((folder / FileOf(number, 0)).parent_path());
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
        const auto seconds = album.firstSeconds + 2 * track;
        if (auto error = WriteMelody(path, seed, album.sampleRate, seconds); !error.empty()) {
            return error;
        }
        if (!WriteTags(path, tags, pictures)) {
            return "Cannot write the tags of " + path.string();
        }
    }
    return {};
}

std::string MakePlaylist(const fs::path& folder) {
    const fs::path path = folder / "Evening Drive.m3u8";
    std::ofstream file(path, std::ios::binary);
    file << "#EXTM3U\n# Across all formats; the second track comes twice.\n";
    for (const auto& [album, track] :
         {std::pair{3U, 1U}, {0U, 2U}, {4U, 1U}, {2U, 3U}, {0U, 2U}, {5U, 0U}, {6U, 2U}}) {
        file << FileOf(album, track).native() << '\n';
    }
    file.close();
    return file ? std::string() : "Cannot write " + path.string();
}

std::string MakeMusic(const fs::path& folder) {
    for (std::size_t album = 0; album < std::size(kDemoAlbums); ++album) {
        if (auto error = MakeAlbum(folder, album); !error.empty()) {
            return error;
        }
    }
    return MakePlaylist(folder);
}

}  // namespace
}  // namespace DeviceSimulator

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "Usage: make-demo-music <folder>\nWrites a small set of tagged music files.\n";
        return 1;
    }
    std::string error;
    try {
        error = DeviceSimulator::MakeMusic(argv[1]);
    } catch (const std::exception& exception) {
        error = std::string("Cannot make the music: ") + exception.what();
    }
    std::cerr << error << (error.empty() ? "" : "\n");
    return error.empty() ? 0 : 1;
}
