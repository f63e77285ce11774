#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "DeviceSimulator/music/Library.h"
#include "DeviceSimulator/music/MusicIndex.h"
#include "LibraryTestFiles.h"
#include "ServiceUtil/Descriptor.h"
#include "tests/Support/Deadline.h"

namespace DeviceSimulator {
namespace {

namespace fs = std::filesystem;

struct Scanned {
    std::unique_ptr<Library> library;
    Names lines;  ///< on stderr, each from the file's name on
};

Scanned Scan(const fs::path& folder, const fs::path& cache = {}, const ScanOptions& options = {}) {
    testing::internal::CaptureStderr();
    Scanned scanned{ScanMusicFolder(folder, cache, options), {}};
    std::istringstream output(testing::internal::GetCapturedStderr());
    for (std::string line; std::getline(output, line);) {
        line.erase(0, line.find(folder.native()) + folder.native().size() + 1);
        scanned.lines.push_back(line.substr(line.rfind('/', line.find(':')) + 1));
    }
    std::sort(scanned.lines.begin(), scanned.lines.end());
    return scanned;
}

TEST(LibraryMusicFolderTest, MusicIsReadInAllItsFormats) {
    const ScratchFolder folder;
    // A process of its own: what the encoders' libraries do is nothing that a sanitizer should tell of here.
    const std::string options = "ASAN_OPTIONS=detect_leaks=0 TSAN_OPTIONS=report_bugs=0 ";
    const int status = std::system((options + "'" MAKE_DEMO_MUSIC "' " + folder.Path().native()).c_str());
    ASSERT_EQ(status, 0);
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, Names{});
    ASSERT_EQ(library->TrackCount(), 23U);
    struct Case {
        const char* title;
        std::uint32_t seconds;
        std::uint32_t sampleRate;
        std::uint32_t coverWidth;
    };
    const Case cases[] = {{"Seven Sparrows", 16, 44100, 640},
                          {"Lights Out", 9, 44100, 480},
                          {"12 Volts", 18, 48000, 320},
                          {"Bell", 13, 48000, 0},
                          {"猫と自動販売機", 12, 48000, 300},
                          {"The Last Page", 20, 44100, 600},
                          {"P.S.", 12, 44100, 500}};
    const Names titles = NamesOf(*library, {}, DEV_MGR_CATEGORY_TRACK);
    for (const Case& c : cases) {
        const auto at = std::find(titles.begin(), titles.end(), c.title) - titles.begin();
        const std::uint32_t track =
            library->Items({}, DEV_MGR_CATEGORY_TRACK)->at(static_cast<std::size_t>(at));
        EXPECT_NEAR(library->Track(track).durationMs, 1000.0 * c.seconds, 150) << c.title;
        EXPECT_EQ(library->Track(track).sampleRate, c.sampleRate) << c.title;
        const auto cover = library->Cover(track);
        EXPECT_EQ(cover ? cover->width : 0, c.coverWidth) << c.title;
    }
}

TEST(LibraryMusicFolderTest, OddNamesAreReadAndDamagedFilesNamedOnceAndLeftOut) {
    const ScratchFolder folder;
    WriteMp3(folder, "deep/er/07 Some Song.MP3", {});
    WriteMp3(folder, "na\xFFme.mp3", {});
    folder.Write(".hidden.mp3", "garbage");
    WriteMp3(folder, ".hidden/song.mp3", {});
    folder.Write("notes.txt", "no music");
    const std::pair<const char*, std::string> damaged[] = {
        {"empty.flac", ""},         {"garbage.mp3", std::string(5000, 'g')},
        {"giant.mp3", ""},          {"head.flac", "fLaC"},
        {"head.ogg", "OggS"},       {"text.m4a", "ftyp moov"},
        {"text.opus", "not music"}, {"text.wav", "RIFF\xFF\xFF\xFF\xFFWAVEfmt "}};
    Names expected;
    for (const auto& [name, bytes] : damaged) {
        folder.Write(name, bytes);
        expected.emplace_back(name);
    }
    fs::resize_file(folder.Path() / "giant.mp3", std::uintmax_t{1} << 40);
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, expected);
    EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_TRACK), (Names{"07 Some Song", "na\xEF\xBF\xBDme"}));
    // The file's own bytes, for whoever opens it.
    EXPECT_EQ(library->Track(1).file, (folder.Path() / "na\xFFme.mp3").native());
}

TEST(LibraryMusicFolderTest, WhatIsNoSoundFileIsNamedAndDoesNotHoldItUp) {
    const ScratchFolder folder;
    WriteMp3(folder, "album/song.mp3", Tags("Song", "", ""));
    fs::create_directory_symlink("..", folder.Path() / "album/up");
    fs::create_directory_symlink("album", folder.Path() / "again");
    fs::create_directory_symlink("self", folder.Path() / "self");
    ASSERT_EQ(mkfifo((folder.Path() / "pipe.mp3").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((folder.Path() / "pipe.m3u").c_str(), 0600), 0);
    fs::create_symlink("nowhere", folder.Path() / "dangling.mp3");
    fs::create_symlink("/proc/self/mem", folder.Path() / "bad sector.mp3");  // opens, but cannot be read
    for (int scan = 0; scan < 2; ++scan) {
        const auto [library, lines] = Scan(folder.Path(), folder.Path() / "cache");
        EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_TRACK), (Names{"Song"}));
        EXPECT_EQ(lines, (Names{"again", "bad sector.mp3: Input/output error",
                                "dangling.mp3: No such file or directory", "pipe.m3u", "pipe.mp3",
                                "self: Too many levels of symbolic links", "up"}));
    }
    const auto [nothing, complaint] = Scan(folder.Path() / "missing");
    EXPECT_TRUE(nothing->Items({}, DEV_MGR_CATEGORY_TRACK)->empty());
    EXPECT_EQ(complaint.size(), 1U);
}

TEST(LibraryMusicFolderTest, WhatMayNotBeReadIsNamedAndReadOnceItMay) {
    const ScratchFolder scratch;
    const fs::path folder = scratch.Path();
    WriteMp3(scratch, "song.mp3", Tags("Song", "", ""));
    WriteMp3(scratch, "closed.mp3", Tags("Closed", "", ""));
    scratch.Write("closed.m3u", "");
    scratch.Write("closed/x.mp3", "");
    const auto allow = [&folder](fs::perms perms) {
        for (const char* name : {"closed.m3u", "closed", "closed.mp3"}) {
            fs::permissions(folder / name, perms);
        }
    };
    fs::permissions(folder, fs::perms::all);
    allow(fs::perms::none);
    const bool isRoot = geteuid() == 0;  // whom nothing is closed to
    ASSERT_TRUE(!isRoot || seteuid(65534) == 0);
    const auto [library, lines] = Scan(folder, folder / "cache");
    ASSERT_TRUE(!isRoot || seteuid(0) == 0);
    EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_TRACK), (Names{"Song"}));
    EXPECT_EQ(lines, (Names{"closed.m3u", "closed.mp3: Permission denied", "closed: Permission denied"}));
    allow(fs::perms::all);
    const auto opened = Scan(folder, folder / "cache");
    EXPECT_EQ(NamesOf(*opened.library, {}, DEV_MGR_CATEGORY_TRACK), (Names{"Closed", "Song"}));
    EXPECT_EQ(opened.lines, (Names{"x.mp3"}));
}

TEST(LibraryMusicFolderTest, AnAlbumTakesTheFirstFrontCoverThatCanBeDecoded) {
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

TEST(LibraryMusicFolderTest, PlaylistsNameFilesBelowTheFolder) {
    const ScratchFolder folder;
    WriteMp3(folder, "a/one.mp3", Tags("One", "", ""));
    WriteMp3(folder, "b/zw\xC3\xB6lf.mp3", Tags("Twelve", "", ""));
    const std::string absolute = (folder.Path() / "a/one.mp3").native();
    folder.Write("lists/Mixed.m3u8",
                 "\xEF\xBB\xBF#EXTM3U\r\n#EXTINF:1,x\r\n../a/one.mp3\r\n\r\n  ../b/zwölf.mp3\r\n" +
                     std::string("missing.mp3\r\n..\\a\\.\\one.mp3\r\n../a/one.mp3"));
    folder.Write("lists/Western.M3U", "..\\b\\zw\xF6lf.mp3\n" + absolute +
                                          "\n/etc/passwd\n../../../../../etc/passwd\nfile://" +
                                          (folder.Path() / "b/zw%C3%B6lf.mp3").native());
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(lines, Names{});
    EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_PLAYLIST), (Names{"Mixed", "Western"}));
    EXPECT_EQ(NamesOf(*library, {{DEV_MGR_CATEGORY_PLAYLIST, 0}}, DEV_MGR_CATEGORY_TRACK),
              (Names{"One", "Twelve", "One", "One"}));
    EXPECT_EQ(NamesOf(*library, {{DEV_MGR_CATEGORY_PLAYLIST, 1}}, DEV_MGR_CATEGORY_TRACK),
              (Names{"Twelve", "One", "Twelve"}));
}

/// Everything that a library says of its tracks, a line each.
std::string Described(const Library& library) {
    std::ostringstream text;
    for (std::uint32_t i = 0; i < library.TrackCount(); ++i) {
        const TrackInfo track = library.Track(i);
        const auto cover = library.Cover(i);
        text << track.title << '|' << track.artist << '|' << track.album << '|' << track.composer << '|'
             << track.file << '|' << track.durationMs << '|' << track.sampleRate << '|'
             << (cover ? cover->bytes.size() : 0) << '\n';
    }
    return text.str();
}

/// 40 songs with the covers of 7 albums, and a file that is none.
void WriteSongs(const ScratchFolder& folder) {
    for (std::uint32_t i = 0; i < 40; ++i) {
        const std::string number = std::to_string(i);
        WriteMp3(folder, "music/" + number + ".mp3",
                 Tags(number, "\xC3\x84", "Album " + std::to_string(i % 7)),
                 {{MakePng({100 + i % 7, 100}), true}});
    }
    folder.Write("music/garbage.mp3", "garbage");
}

/// It is no music any more, and of the same size and time: nothing shows that it was written to.
void Spoil(const fs::path& file) {
    const auto time = fs::last_write_time(file);
    const std::string garbage(fs::file_size(file), 'g');
    std::ofstream(file, std::ios::binary) << garbage;
    fs::last_write_time(file, time);
}

TEST(LibraryMusicFolderTest, OnlyWhatIsNewOrChangedIsReadAgain) {
    const ScratchFolder folder;
    WriteSongs(folder);
    const fs::path music = folder.Path() / "music";
    const auto scan = [&] { return Scan(music, folder.Path() / "cache"); };
    const std::string expected = Described(*Scan(music).library);
    EXPECT_EQ(Described(*scan().library), expected);
    Spoil(music / "3.mp3");
    EXPECT_EQ(Described(*scan().library), expected);
    fs::last_write_time(music / "3.mp3", fs::last_write_time(music / "3.mp3") + std::chrono::microseconds(1));
    EXPECT_EQ(scan().lines, (Names{"3.mp3", "garbage.mp3"}));
    fs::remove(music / "4.mp3");
    WriteMp3(folder, "music/garbage.mp3", Tags("Mended", "", ""));
    EXPECT_EQ(Described(*scan().library), Described(*Scan(music).library));
    // A disk that is not there for once is not forgotten.
    fs::rename(music, folder.Path() / "elsewhere");
    EXPECT_EQ(scan().library->TrackCount(), 0U);
    fs::rename(folder.Path() / "elsewhere", music);
    Spoil(music / "5.mp3");
    EXPECT_EQ(scan().library->TrackCount(), 39U);
}

std::string ReadBytes(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(LibraryMusicFolderTest, AnIndexThatCannotBeUsedCostsALineAtMost) {
    const ScratchFolder folder;
    WriteSongs(folder);
    const fs::path index = folder.Path() / "cache/music.index";
    const std::string expected = Described(*Scan(folder.Path() / "music", index.parent_path()).library);
    const auto expect = [&](const fs::path& cache, std::size_t lines) {
        const auto scanned = Scan(folder.Path() / "music", cache);
        EXPECT_EQ(Described(*scanned.library), expected);
        EXPECT_LE(scanned.lines.size(), 1 + lines);
    };
    const std::string good = ReadBytes(index);
    std::string holed = good;
    holed.replace(good.size() / 2, 100, 100, '\x5A');
    std::string otherVersion = good;
    otherVersion[good.find('1')] = '9';
    for (const auto& bytes : {std::string(), std::string(5000, 'x'), good.substr(0, good.size() / 2), holed,
                              otherVersion, good + good.substr(good.size() - 50)}) {
        folder.Write(index, bytes);
        expect(index.parent_path(), 0);
        EXPECT_EQ(ReadBytes(index).size(), good.size());  // whole again
    }
    fs::remove_all(index.parent_path() / "covers");
    expect(index.parent_path(), 0);
    for (const auto& cover : fs::directory_iterator(index.parent_path() / "covers")) {
        fs::resize_file(cover.path(), 100);  // is found out when it is wanted
    }
    EXPECT_EQ(Scan(folder.Path() / "music", index.parent_path()).library->Cover(0), nullptr);
    expect(folder.Write("file", ""), 1);
}

TEST(LibraryMusicFolderTest, TwoProcessesShareAnIndexAndOneOfThemWrites) {
    const ScratchFolder folder;
    WriteSongs(folder);
    const fs::path music = folder.Path() / "music";
    const fs::path cache = folder.Path() / "cache";
    const std::string expected = Described(*Scan(music, cache).library);
    const std::string kept = ReadBytes(cache / "music.index");
    WriteMp3(folder, "music/new.mp3", Tags("New", "", ""), {{MakePng({50, 50}), true}});
    {
        const MusicIndex other(cache);
        ASSERT_EQ(other.Problem(), "");
        const auto scanned = Scan(music, cache);
        EXPECT_EQ(scanned.lines.size(), 2U);
        EXPECT_EQ(scanned.library->TrackCount(), 41U);
        EXPECT_NE(scanned.library->Cover(40), nullptr);
        EXPECT_EQ(ReadBytes(cache / "music.index"), kept);
    }
    const auto scanned = Scan(music, cache);
    EXPECT_EQ(scanned.lines.size(), 1U);
    EXPECT_GT(ReadBytes(cache / "music.index").size(), kept.size());
    // What has gone leaves nothing behind.
    fs::remove_all(music);
    fs::create_directory(music);
    EXPECT_EQ(Scan(music, cache).library->TrackCount(), 0U);
    EXPECT_LT(ReadBytes(cache / "music.index").size(), 100U);
    EXPECT_TRUE(fs::is_empty(cache / "covers"));
}

TEST(LibraryMusicFolderTest, AScanThatIsCutShortGoesOnWhereItWas) {
    const ScratchFolder folder;
    constexpr std::size_t kFiles = 800;
    for (std::size_t i = 0; i < kFiles; ++i) {
        WriteMp3(folder, "music/" + std::to_string(i) + ".mp3", Tags("Song", "", ""));
    }
    const fs::path music = folder.Path() / "music";
    const fs::path cache = folder.Path() / "cache";
    // As soon as something has been kept.
    const auto cut = [&](std::uint32_t) {
        if (fs::file_size(cache / "music.index") > 1000) {
            throw std::runtime_error("enough");
        }
    };
    EXPECT_THROW(ScanMusicFolder(music, cache, {.progress = cut}), std::runtime_error);
    // Only what is not known yet misses.
    for (const auto& file : fs::directory_iterator(music)) {
        Spoil(file.path());
    }
    const auto [library, lines] = Scan(music, cache);
    EXPECT_EQ(library->TrackCount() + lines.size(), kFiles);
    EXPECT_GE(library->TrackCount(), 1U);
    EXPECT_LT(library->TrackCount(), kFiles);
}

/// The media program that has a file open; 0 for none.
pid_t ReaderOf(const fs::path& file) {
    for (const auto& process : fs::directory_iterator("/proc")) {
        std::error_code ignored;
        if (fs::read_symlink(process.path() / "exe", ignored).filename() != "simulated-player-media") {
            continue;
        }
        std::error_code error;
        for (fs::directory_iterator fd(process.path() / "fd", error), end; !error && fd != end;
             fd.increment(error)) {
            if (fs::read_symlink(fd->path(), ignored) == file) {
                return std::stoi(process.path().filename());
            }
        }
    }
    return 0;
}

/// Waits for one that reads the file, other than `before`; 0 when none comes.
pid_t WaitForReader(const fs::path& file, pid_t before = 0) {
    pid_t reader = 0;
    EXPECT_TRUE(TestSupport::WaitUntil([&] {
        reader = ReaderOf(file);
        return reader != 0 && reader != before;
    }));
    return reader;
}

TEST(LibraryMusicFolderTest, AFileIsToBlameForWhatHappensTwiceAndIsRemembered) {
    const ScratchFolder scratch;
    const fs::path music = scratch.Path() / "music";
    const fs::path file = music / "1599.mp3";
    for (int i = 1000; i < 1600; ++i) {
        WriteMp3(scratch, "music/" + std::to_string(i) + ".mp3", Tags("Song", "", ""));
    }
    const auto restore = [&] {
        fs::remove(file);
        fs::rename(scratch.Path() / "away", file);
    };
    struct Case {
        bool isKilled;  ///< else it takes too long
        bool isOnce;
        Names lines;
    };
    constexpr std::chrono::milliseconds kLongPatience = std::chrono::seconds(3) * TEST_TIME_SCALE;
    const auto patience = std::chrono::milliseconds(500) * TEST_TIME_SCALE;
    const std::string late = "1599.mp3: it takes longer than " + std::to_string(patience.count()) + " ms";
    for (const auto& [isKilled, isOnce, lines] :
         {Case{true, true, {}}, Case{false, true, {}}, Case{false, false, {late}},
          Case{true, false, {"1599.mp3: the media program has ended (signal 9)"}}}) {
        // Once the folder has been looked at, the file is a pipe: whoever reads it is held up.
        Descriptor pipe;
        ScanOptions options;
        // Who is to be met at the file is given the time for it.
        options.patience = isKilled || isOnce ? kLongPatience : patience;
        options.progress = [&](std::uint32_t) {
            if (!pipe.IsOpen()) {
                fs::rename(file, scratch.Path() / "away");
                EXPECT_EQ(mkfifo(file.c_str(), 0600), 0);
                pipe = Descriptor(open(file.c_str(), O_RDWR | O_CLOEXEC));  // or opening it would hold up
            }
        };
        std::thread meddler([&, isKilled = isKilled, isOnce = isOnce] {
            const pid_t reader = isKilled || isOnce ? WaitForReader(file) : 0;
            if (isOnce) {
                restore();
            }
            if (isKilled && reader != 0) {
                kill(reader, SIGKILL);
            }
            const pid_t next = isKilled && !isOnce ? WaitForReader(file, reader) : 0;
            if (next != 0) {
                kill(next, SIGKILL);
            }
        });
        const auto scanned = Scan(music, scratch.Path() / "cache", options);
        meddler.join();
        EXPECT_EQ(scanned.lines, lines);
        EXPECT_EQ(scanned.library->TrackCount(), 600U - lines.size());
        if (!isOnce) {
            restore();
            EXPECT_EQ(Scan(music, scratch.Path() / "cache").lines, lines);
        }
        fs::remove_all(scratch.Path() / "cache");
    }
}

#ifndef TEST_MEMORY_UNLIMITED
/// An mp3 with a picture of 120 MB, most of which is a hole in the file.
void WriteHugePicture(const ScratchFolder& folder, const char* name) {
    constexpr std::uint32_t kSize = 120U << 20;
    const auto number = [](std::uint32_t value, int bits) {
        std::string text;
        for (int shift = 3 * bits; shift >= 0; shift -= bits) {
            text += static_cast<char>(value >> shift & ((1U << bits) - 1));
        }
        return text;
    };
    const std::string content("\0image/jpeg\0\3\0\xFF\xD8\xFF", 17);
    const auto path = folder.Write(name, std::string("ID3\3\0\0", 6) + number(kSize + 10, 7) + "APIC" +
                                             number(kSize, 8) + std::string(2, '\0') + content);
    fs::resize_file(path, kSize + 20);
    std::string frame(417, '\0');
    frame.replace(0, 4, "\xFF\xFB\x90\x64");
    std::ofstream(path, std::ios::binary | std::ios::app) << frame << frame << frame << frame;
}

TEST(LibraryMusicFolderTest, AFileThatTakesTooMuchMemoryIsNamedAndThePlayerStaysSmall) {
    constexpr long kMostGrowthKb = 20'000;
    const ScratchFolder folder;
    for (const char* name : {"1.mp3", "2.mp3", "3.mp3", "4.mp3"}) {
        WriteHugePicture(folder, name);
    }
    WriteMp3(folder, "5.mp3", Tags("Song", "", ""));
    const auto peak = [](int who) {
        rusage usage{};
        getrusage(who, &usage);
        return usage.ru_maxrss;
    };
    const long before = peak(RUSAGE_SELF);
    const auto [library, lines] = Scan(folder.Path());
    EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_TRACK), (Names{"Song"}));
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "1.mp3: it takes too much memory");
    EXPECT_LE(peak(RUSAGE_SELF), before + kMostGrowthKb);
    EXPECT_LE(peak(RUSAGE_CHILDREN), 300'000);
}
#endif

}  // namespace
}  // namespace DeviceSimulator
