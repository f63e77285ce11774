#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "DeviceSimulator/Library.h"
#include "DeviceSimulator/MusicFolderPlaylist.h"
#include "DeviceSimulator/MusicFolderTags.h"
#include "DeviceSimulator/tools/DemoMusic.h"
#include "DeviceSimulator/tools/DemoMusicMelody.h"
#include "tests/DeviceSimulator/LibraryTestFiles.h"

#if defined(__SANITIZE_THREAD__)
#define LIBRARY_TEST_THREAD_SANITIZER
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define LIBRARY_TEST_THREAD_SANITIZER
#endif
#endif

namespace DeviceSimulator {
namespace {

namespace fs = std::filesystem;

/// Empty where music can be encoded.
std::string WhyNotEncode() {
#ifdef LIBRARY_TEST_THREAD_SANITIZER
    return "the encoders' libraries, not instrumented, look like races from first to last";
#else
    return CheckEncoders();
#endif
}

struct Scanned {
    std::unique_ptr<Library> library;
    Names lines;  ///< on stderr
};

Scanned Scan(const fs::path& folder) {
    testing::internal::CaptureStderr();
    Scanned scanned{ScanMusicFolder(folder), {}};
    std::istringstream output(testing::internal::GetCapturedStderr());
    for (std::string line; std::getline(output, line);) {
        scanned.lines.push_back(line);
    }
    return scanned;
}

std::uint32_t TrackCalled(const Library& library, std::string_view title) {
    for (std::uint32_t i = 0; i < library.TrackCount(); ++i) {
        if (library.Track(i).title == title) {
            return i;
        }
    }
    ADD_FAILURE() << "no track " << title;
    return 0;
}

std::shared_ptr<const Picture> CoverOf(const Library& library, std::string_view title) {
    return library.Cover(TrackCalled(library, title));
}

TEST(MusicFolder, TheDemosMusicIsReadInAllItsFormats) {
    if (const auto reason = WhyNotEncode(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const ScratchFolder folder;
    ASSERT_EQ(MakeDemoMusic(folder.Path()), "");
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_TRUE(lines.empty()) << lines.front();
    ASSERT_EQ(library->TrackCount(), 20U);
    struct Case {
        const char* title;
        const char* album;
        const char* composer;
        std::uint32_t seconds;
        std::uint32_t sampleRate;
        std::uint32_t coverWidth;
        std::uint32_t coverHeight;
    };
    for (const Case& c : {Case{"Seven Sparrows", "First Rehearsal", "H. Tolliver", 16, 44100, 640, 640},
                          Case{"Lights Out", "Encore, Unplanned", "H. Tolliver", 9, 44100, 480, 480},
                          Case{"12 Volts", "Slow Circuits", "", 18, 48000, 320, 320},
                          Case{"Bell", "B-Sides & Bicycles", "", 13, 48000, 0, 0},
                          Case{"猫と自動販売機", "夜明けの散歩道", "小野寺さやか", 12, 48000, 300, 300},
                          Case{"The Last Page", "Diary in Two Halves", "Osric Vane", 20, 44100, 600, 300}}) {
        const std::uint32_t track = TrackCalled(*library, c.title);
        const TrackInfo info = library->Track(track);
        EXPECT_EQ(info.album, c.album);
        EXPECT_EQ(info.composer, c.composer) << c.title;
        EXPECT_NEAR(info.durationMs, 1000.0 * c.seconds, 150) << c.title;
        EXPECT_EQ(info.sampleRate, c.sampleRate) << c.title;
        EXPECT_TRUE(fs::exists(info.file)) << info.file;
        const auto cover = library->Cover(track);
        EXPECT_EQ(cover ? cover->width : 0, c.coverWidth) << c.title;
        EXPECT_EQ(cover ? cover->height : 0, c.coverHeight) << c.title;
    }
    EXPECT_EQ(NamesOf(*library, {}, kPlaylist), (Names{"Evening Drive"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 0}}, kTrack),
              (Names{"Downhill, No Hands", "Seven Sparrows", "猫と自動販売機", "afterglow", "Seven Sparrows",
                     "January Kettle"}));
    EXPECT_EQ(NamesOf(*library, {{kAlbum, 1}}, kTrack),
              (Names{"January Kettle", "Attic Window", "The Last Page"}));
}

TEST(MusicFolder, AnM4aFileIsReadWithItsPicture) {
    if (const auto reason = WhyNotEncode(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const ScratchFolder folder;
    const fs::path path = folder.Path() / "song.m4a";
    ASSERT_EQ(EncodeWith("lamemp3enc ! audio/mpeg,rate=48000 ! mp4mux", path, MakeMelody(1, 48000, 2), 48000),
              "");
    TrackTags tags = Tags("Kvällsljus", "Artist", "Album");
    tags.albumArtist = "Owner";
    tags.disc = 2;
    tags.track = 7;
    tags.compilation = true;
    ASSERT_TRUE(WriteTags(path, tags, std::vector<DemoPicture>{{MakePng({40, 40}), true}}));
    const auto file = ReadMusicFile(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->tags.title, "Kvällsljus");
    EXPECT_EQ(file->tags.albumArtist, "Owner");
    EXPECT_EQ(file->tags.disc, 2U);
    EXPECT_EQ(file->tags.track, 7U);
    EXPECT_TRUE(file->tags.compilation);
    EXPECT_NEAR(file->tags.durationMs, 2000, 100);
    EXPECT_EQ(file->tags.sampleRate, 48000U);
    ASSERT_EQ(file->pictures.size(), 1U);
    EXPECT_EQ(file->pictures.front(), MakePng({40, 40}));
}

TEST(MusicFolder, AFileWithoutTagsIsCalledByItsName) {
    const ScratchFolder folder;
    folder.WriteMp3("deep/er/07 Some Song.MP3", {});
    folder.WriteMp3("na\xFFme.mp3", {});
    folder.Write(".hidden.mp3", "garbage");
    folder.WriteMp3(".hidden/song.mp3", {});
    folder.Write("notes.txt", "no music");
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_TRUE(lines.empty()) << lines.front();
    EXPECT_EQ(NamesOf(*library, {}, kTrack), (Names{"07 Some Song", "na\xEF\xBF\xBDme"}));
    EXPECT_EQ(NamesOf(*library, {}, kArtist), (Names{"Unknown Artist"}));
    EXPECT_EQ(NamesOf(*library, {}, kAlbum), (Names{"Unknown Album"}));
    // The file's own bytes, for whoever opens it.
    EXPECT_EQ(library->Track(1).file, (folder.Path() / "na\xFFme.mp3").native());
}

TEST(MusicFolder, DamagedFilesAreNamedOnceAndLeftOut) {
    const ScratchFolder folder;
    folder.WriteMp3("good.mp3", Tags("Good", "", ""));
    folder.Write("bad/empty.flac", "");
    folder.Write("bad/garbage.mp3", std::string(5000, 'g'));
    folder.Write("bad/head.flac", std::string("fLaC\0\0\0\x22", 8));
    folder.Write("bad/head.ogg", "OggS");
    folder.Write("bad/text.m4a", "ftyp moov");
    folder.Write("bad/text.opus", "not music");
    folder.Write("bad/text.wav", "RIFF\xFF\xFF\xFF\xFFWAVEfmt ");
    fs::create_symlink("nowhere.mp3", folder.Path() / "bad/dangling.mp3");
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(NamesOf(*library, {}, kTrack), (Names{"Good"}));
    for (const char* name : {"empty.flac", "garbage.mp3", "head.flac", "head.ogg", "text.m4a", "text.opus",
                             "text.wav", "dangling.mp3"}) {
        EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                                [name](const std::string& line) { return line.ends_with(name); }),
                  1)
            << name;
    }
    EXPECT_EQ(lines.size(), 8U);
}

TEST(MusicFolder, AFlacFileCutShortIsReadByItsHead) {
    if (const auto reason = WhyNotEncode(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const ScratchFolder folder;
    const fs::path path = folder.Path() / "cut.flac";
    ASSERT_EQ(EncodeFile(path, MakeMelody(3, 44100, 3), 44100), "");
    ASSERT_TRUE(WriteTags(path, Tags("Cut", "", ""), {}));
    fs::resize_file(path, fs::file_size(path) / 2);
    const auto file = ReadMusicFile(path);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->tags.title, "Cut");
    EXPECT_EQ(file->tags.durationMs, 3000U);
}

TEST(MusicFolder, LinksThatLoopAndPipesDoNotHoldItUp) {
    const ScratchFolder folder;
    folder.WriteMp3("album/song.mp3", Tags("Song", "", ""));
    fs::create_directory_symlink("..", folder.Path() / "album/up");
    fs::create_directory_symlink("album", folder.Path() / "again");
    fs::create_directory_symlink("self", folder.Path() / "self");
    ASSERT_EQ(mkfifo((folder.Path() / "pipe.mp3").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((folder.Path() / "pipe.m3u").c_str(), 0600), 0);
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(NamesOf(*library, {}, kTrack), (Names{"Song"}));
    EXPECT_TRUE(lines.empty()) << lines.front();
}

TEST(MusicFolder, AFolderWithoutMusicIsAnEmptyLibraryAndALine) {
    const ScratchFolder folder;
    const fs::path file = folder.Write("file.txt", "text");
    for (const fs::path& path : {folder.Path(), folder.Path() / "missing", file, fs::path("")}) {
        const auto [library, lines] = Scan(path);
        EXPECT_EQ(library->TrackCount(), 0U);
        EXPECT_TRUE(library->Items({}, kTrack)->empty());
        EXPECT_EQ(lines.size(), 1U) << path;
    }
}

TEST(MusicFolder, AnAlbumTakesTheFirstFrontCoverThatCanBeDecoded) {
    const ScratchFolder folder;
    const DemoPicture back{MakeJpeg({100, 100}), false};
    const DemoPicture front{MakeJpeg({200, 200}), true};
    const DemoPicture bomb{MakePngClaiming({100000, 100000}), true};
    const DemoPicture text{{'t', 'e', 'x', 't'}, true};
    using Set = std::vector<DemoPicture>;
    folder.WriteMp3("1.mp3", Tags("both", "", "Both"), Set{back, front});
    folder.WriteMp3("2.mp3", Tags("only back", "", "Back"), Set{back});
    folder.WriteMp3("3.mp3", Tags("bomb", "", "Bomb"), Set{bomb, text});
    folder.WriteMp3("4.mp3", Tags("bomb and back", "", "Saved"), Set{bomb, back});
    folder.WriteMp3("5.mp3", Tags("first of two", "", "Two"));
    folder.WriteMp3("6.mp3", Tags("second of two", "", "Two"), Set{front});
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_TRUE(lines.empty()) << lines.front();
    EXPECT_EQ(CoverOf(*library, "both")->bytes, front.bytes);
    EXPECT_EQ(CoverOf(*library, "only back")->bytes, back.bytes);
    EXPECT_EQ(CoverOf(*library, "bomb"), nullptr);
    EXPECT_EQ(CoverOf(*library, "bomb and back"), CoverOf(*library, "only back"));  // kept once
    EXPECT_EQ(CoverOf(*library, "first of two"), CoverOf(*library, "both"));
}

TEST(MusicFolder, PlaylistsNameFilesBelowTheFolder) {
    const ScratchFolder folder;
    folder.WriteMp3("a/one.mp3", Tags("One", "", ""));
    folder.WriteMp3("b/zw\xC3\xB6lf.mp3", Tags("Twelve", "", ""));
    const std::string absolute = (folder.Path() / "a/one.mp3").native();
    folder.Write("lists/Mixed.m3u8",
                 "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:1,x\r\n../a/one.mp3\r\n\r\n  ../b/zwölf.mp3\r\n" +
                     std::string("missing.mp3\r\n..\\a\\.\\one.mp3\r\n../a/one.mp3"));
    folder.Write("lists/Western.M3U",
                 "..\\b\\zw\xF6lf.mp3\n" + absolute + "\n/etc/passwd\n../../../../../etc/passwd\n");
    folder.Write("lists/a empty.m3u", "#EXTM3U\n");
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_TRUE(lines.empty()) << lines.front();
    EXPECT_EQ(NamesOf(*library, {}, kPlaylist), (Names{"Mixed", "Western", "a empty"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 0}}, kTrack), (Names{"One", "Twelve", "One", "One"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 1}}, kTrack), (Names{"Twelve", "One"}));
    EXPECT_TRUE(library->Items({{kPlaylist, 2}}, kTrack)->empty());
}

TEST(MusicFolder, DamageAnywhereInAFileIsSurvived) {
    const ScratchFolder folder;
    TrackTags tags = Tags("Title", "Artist", "Album");
    const std::vector<DemoPicture> pictures{{MakeJpeg({64, 64}), true}};
    const fs::path path = folder.WriteMp3("song.mp3", tags, pictures, 100);
    std::ifstream stream(path, std::ios::binary);
    const std::string good{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t at = 0; at < std::min<std::size_t>(good.size(), 400); ++at) {
        std::string bytes = good;
        bytes[at] = static_cast<char>(bytes[at] ^ 0xFF);
        folder.Write("song.mp3", bytes);
        ReadMusicFile(path);
        folder.Write("song.mp3", good.substr(0, at));
        ReadMusicFile(path);
    }
}

TEST(DemoMusic, WhatCannotBeWrittenIsSaid) {
    if (const auto reason = WhyNotEncode(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const ScratchFolder folder;
    const fs::path file = folder.Write("file", "text");
    EXPECT_NE(MakeDemoMusic(file).find(file.native()), std::string::npos);
    EXPECT_NE(EncodeFile(folder.Path() / "missing/x.mp3", MakeMelody(1, 44100, 1), 44100), "");
    EXPECT_NE(EncodeFile(folder.Path() / "x.xyz", MakeMelody(1, 44100, 1), 44100), "");
}

}  // namespace
}  // namespace DeviceSimulator
