#include <sys/stat.h>

#include <algorithm>
#include <sstream>

#include "DeviceSimulator/Library.h"
#include "DeviceSimulator/MusicFolderTags.h"
#include "DeviceSimulator/tools/DemoMusic.h"
#include "DeviceSimulator/tools/DemoMusicMelody.h"
#include "LibraryTestFiles.h"

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

struct Scanned {
    std::unique_ptr<Library> library;
    Names lines;  ///< on stderr, each without the folder
};

Scanned Scan(const fs::path& folder) {
    testing::internal::CaptureStderr();
    Scanned scanned{ScanMusicFolder(folder), {}};
    std::istringstream output(testing::internal::GetCapturedStderr());
    for (std::string line; std::getline(output, line);) {
        scanned.lines.push_back(line.substr(line.rfind('/') + 1));
    }
    std::sort(scanned.lines.begin(), scanned.lines.end());
    return scanned;
}

TEST(MusicFolder, MusicIsReadInAllItsFormats) {
#ifdef LIBRARY_TEST_THREAD_SANITIZER
    GTEST_SKIP() << "the encoders' libraries, not instrumented, look like races from first to last";
#endif
    if (const auto reason = CheckEncoders(); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const ScratchFolder folder;
    ASSERT_EQ(MakeDemoMusic(folder.Path()), "");
    const fs::path m4a = folder.Path() / "song.m4a";
    ASSERT_EQ(EncodeWith("lamemp3enc ! audio/mpeg,rate=48000 ! mp4mux", m4a, MakeMelody(1, 48000, 2), 48000),
              "");
    ASSERT_TRUE(WriteTags(m4a, Tags("~ Kvällsljus", "Artist", "Album", 2, 7), {{{MakePng({40, 40}), true}}}));
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, Names{});
    ASSERT_EQ(library->TrackCount(), 21U);
    struct Case {
        const char* title;
        std::uint32_t seconds;
        std::uint32_t sampleRate;
        std::uint32_t coverWidth;
    };
    const Case cases[] = {{"Seven Sparrows", 16, 44100, 640}, {"Lights Out", 9, 44100, 480},
                          {"12 Volts", 18, 48000, 320},       {"Bell", 13, 48000, 0},
                          {"猫と自動販売機", 12, 48000, 300}, {"The Last Page", 20, 44100, 600},
                          {"~ Kvällsljus", 2, 48000, 40}};
    const Names titles = NamesOf(*library, {}, kTrack);
    for (const Case& c : cases) {
        const auto at = std::find(titles.begin(), titles.end(), c.title) - titles.begin();
        const std::uint32_t track = library->Items({}, kTrack)->at(static_cast<std::size_t>(at));
        EXPECT_NEAR(library->Track(track).durationMs, 1000.0 * c.seconds, 150) << c.title;
        EXPECT_EQ(library->Track(track).sampleRate, c.sampleRate) << c.title;
        const auto cover = library->Cover(track);
        EXPECT_EQ(cover ? cover->width : 0, c.coverWidth) << c.title;
    }
}

TEST(MusicFolder, OddNamesAreReadAndDamagedFilesNamedOnceAndLeftOut) {
    const ScratchFolder folder;
    WriteMp3(folder, "deep/er/07 Some Song.MP3", {});
    WriteMp3(folder, "na\xFFme.mp3", {});
    folder.Write(".hidden.mp3", "garbage");
    WriteMp3(folder, ".hidden/song.mp3", {});
    folder.Write("notes.txt", "no music");
    const std::pair<const char*, std::string> damaged[] = {{"empty.flac", ""},
                                                           {"garbage.mp3", std::string(5000, 'g')},
                                                           {"head.flac", "fLaC"},
                                                           {"head.ogg", "OggS"},
                                                           {"text.m4a", "ftyp moov"},
                                                           {"text.opus", "not music"},
                                                           {"text.wav", "RIFF\xFF\xFF\xFF\xFFWAVEfmt "}};
    Names expected;
    for (const auto& [name, bytes] : damaged) {
        folder.Write(name, bytes);
        expected.emplace_back(name);
    }
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(NamesOf(*library, {}, kTrack), (Names{"07 Some Song", "na\xEF\xBF\xBDme"}));
    // The file's own bytes, for whoever opens it.
    EXPECT_EQ(library->Track(1).file, (folder.Path() / "na\xFFme.mp3").native());
}

TEST(MusicFolder, LinksThatLoopAndPipesDoNotHoldItUp) {
    const ScratchFolder folder;
    WriteMp3(folder, "album/song.mp3", Tags("Song", "", ""));
    fs::create_directory_symlink("..", folder.Path() / "album/up");
    fs::create_directory_symlink("album", folder.Path() / "again");
    fs::create_directory_symlink("self", folder.Path() / "self");
    ASSERT_EQ(mkfifo((folder.Path() / "pipe.mp3").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((folder.Path() / "pipe.m3u").c_str(), 0600), 0);
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(NamesOf(*library, {}, kTrack), (Names{"Song"}));
    EXPECT_EQ(lines, Names{});
    const auto [nothing, complaint] = Scan(folder.Path() / "missing");
    EXPECT_TRUE(nothing->Items({}, kTrack)->empty());
    EXPECT_EQ(complaint.size(), 1U);
}

TEST(MusicFolder, AnAlbumTakesTheFirstFrontCoverThatCanBeDecoded) {
    const ScratchFolder folder;
    const DemoPicture back{MakeJpeg({100, 100}), false};
    const DemoPicture front{MakeJpeg({200, 200}), true};
    const DemoPicture bomb{MakePngClaiming({100000, 100000}), true};
    WriteMp3(folder, "1.mp3", Tags("1 both", "", "Both"), {back, front});
    WriteMp3(folder, "2.mp3", Tags("2 bomb", "", "Bomb"), {bomb});
    WriteMp3(folder, "3.mp3", Tags("3 bomb and back", "", "Saved"), {bomb, back});
    WriteMp3(folder, "4.mp3", Tags("4 first of two", "", "Two"));
    WriteMp3(folder, "5.mp3", Tags("5 second of two", "", "Two"), {front});
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, Names{});
    ASSERT_EQ(library->TrackCount(), 5U);
    EXPECT_EQ(library->Cover(0)->bytes, front.bytes);
    EXPECT_EQ(library->Cover(1), nullptr);
    EXPECT_EQ(library->Cover(2)->bytes, back.bytes);
    EXPECT_EQ(library->Cover(3), library->Cover(0));  // kept once
}

TEST(MusicFolder, PlaylistsNameFilesBelowTheFolder) {
    const ScratchFolder folder;
    WriteMp3(folder, "a/one.mp3", Tags("One", "", ""));
    WriteMp3(folder, "b/zw\xC3\xB6lf.mp3", Tags("Twelve", "", ""));
    const std::string absolute = (folder.Path() / "a/one.mp3").native();
    folder.Write("lists/Mixed.m3u8",
                 "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:1,x\r\n../a/one.mp3\r\n\r\n  ../b/zwölf.mp3\r\n" +
                     std::string("missing.mp3\r\n..\\a\\.\\one.mp3\r\n../a/one.mp3"));
    folder.Write("lists/Western.M3U",
                 "..\\b\\zw\xF6lf.mp3\n" + absolute + "\n/etc/passwd\n../../../../../etc/passwd\n");
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, Names{});
    EXPECT_EQ(NamesOf(*library, {}, kPlaylist), (Names{"Mixed", "Western"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 0}}, kTrack), (Names{"One", "Twelve", "One", "One"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 1}}, kTrack), (Names{"Twelve", "One"}));
}

}  // namespace
}  // namespace DeviceSimulator
