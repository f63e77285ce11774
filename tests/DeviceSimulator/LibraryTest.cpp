#include "DeviceSimulator/Library.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <thread>

#include "DeviceSimulator/LibraryText.h"
#include "DeviceSimulator/PictureCodec.h"
#include "tests/DeviceSimulator/LibraryTestFiles.h"

namespace DeviceSimulator {
namespace {

/// The position of the item called `name`.
std::uint32_t PositionOf(const Library& library, const std::vector<PathStep>& path, std::uint32_t category,
                         const std::string& name) {
    const Names names = NamesOf(library, path, category);
    const auto found = std::find(names.begin(), names.end(), name);
    EXPECT_NE(found, names.end()) << name;
    return static_cast<std::uint32_t>(found - names.begin());
}

std::string_view FieldOf(const TrackInfo& info, std::uint32_t category) {
    switch (category) {
        case kArtist:
            return info.artist;
        case kAlbum:
            return info.album;
        case kGenre:
            return info.genre;
        case kComposer:
            return info.composer;
        default:
            return info.title;
    }
}

/// What a letter jump goes by: the initial byte in lower case, behind a leading "The ".
unsigned char LetterOf(std::string name) {
    if (name.size() > 4 && (name[0] | 32) == 't' && (name[1] | 32) == 'h' && (name[2] | 32) == 'e' &&
        name[3] == ' ') {
        name.erase(0, 4);
    }
    const char c = name.front();
    return static_cast<unsigned char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
}

struct Maker {
    const char* name;
    std::unique_ptr<Library> (*make)();
    friend std::ostream& operator<<(std::ostream& out, const Maker& maker) { return out << maker.name; }
};

class EveryLibrary : public testing::TestWithParam<Maker> {};

TEST_P(EveryLibrary, ListsAreSortedByLetterAndHoldEachEntryOnce) {
    const auto library = GetParam().make();
    for (const std::uint32_t category : {kArtist, kAlbum, kGenre, kComposer, kTrack}) {
        const auto list = library->Items({}, category);
        ASSERT_FALSE(list->empty()) << category;
        EXPECT_EQ(std::set(list->begin(), list->end()).size(), list->size()) << category;
        const Names names = NamesOf(*library, {}, category);
        EXPECT_TRUE(std::is_sorted(names.begin(), names.end(), [](const auto& a, const auto& b) {
            return SortKey(a) < SortKey(b);
        })) << category;
        for (std::size_t i = 1; i < names.size(); ++i) {
            EXPECT_LE(LetterOf(names[i - 1]), LetterOf(names[i])) << names[i - 1] << " / " << names[i];
        }
    }
    EXPECT_EQ(library->Items({}, kTrack)->size(), library->TrackCount());
}

TEST_P(EveryLibrary, EachTrackIsReachedOnceThroughArtistsAndThroughAlbums) {
    const auto library = GetParam().make();
    for (const std::uint32_t category : {kArtist, kAlbum}) {
        std::vector<std::uint32_t> reached;
        for (std::uint32_t i = 0; i < library->Items({}, category)->size(); ++i) {
            const auto tracks = library->Items({{category, i}}, kTrack);
            EXPECT_FALSE(tracks->empty());
            reached.insert(reached.end(), tracks->begin(), tracks->end());
        }
        std::sort(reached.begin(), reached.end());
        EXPECT_EQ(reached, *library->Items({}, kTrack));
    }
}

TEST_P(EveryLibrary, ANarrowedListHoldsWhatFitsTheWholePath) {
    const auto library = GetParam().make();
    for (const std::vector<std::uint32_t>& chain :
         {std::vector<std::uint32_t>{kGenre, kArtist, kAlbum}, {kComposer, kAlbum}, {kArtist, kAlbum}}) {
        std::size_t found = 0;
        const std::function<void(std::vector<PathStep>, std::vector<std::string_view>)> walk =
            [&](const std::vector<PathStep>& path, const std::vector<std::string_view>& names) {
                if (path.size() == chain.size()) {
                    const auto tracks = library->Items(path, kTrack);
                    EXPECT_FALSE(tracks->empty());
                    found += tracks->size();
                    for (const std::uint32_t track : *tracks) {
                        for (std::size_t i = 0; i < chain.size(); ++i) {
                            EXPECT_EQ(FieldOf(library->Track(track), chain[i]), names[i]);
                        }
                    }
                    return;
                }
                const std::uint32_t category = chain[path.size()];
                const auto list = library->Items(path, category);
                for (std::uint32_t i = 0; i < list->size(); ++i) {
                    auto deeper = path;
                    deeper.push_back({category, i});
                    auto deeperNames = names;
                    deeperNames.push_back(library->ItemName(category, (*list)[i]));
                    walk(deeper, deeperNames);
                }
            };
        walk({}, {});
        std::size_t expected = 0;
        for (std::uint32_t track = 0; track < library->TrackCount(); ++track) {
            expected += FieldOf(library->Track(track), chain.front()).empty() ? 0 : 1;
        }
        EXPECT_EQ(found, expected);
    }
}

TEST_P(EveryLibrary, CoversAreWhatTheyClaimToBe) {
    const auto library = GetParam().make();
    for (std::uint32_t i = 0; i < std::min<std::size_t>(40, library->Items({}, kAlbum)->size()); ++i) {
        const auto cover = library->Cover(library->Items({{kAlbum, i}}, kTrack)->front());
        if (cover) {
            const auto header = ReadJpegHeader(cover->bytes);
            ASSERT_TRUE(header);
            EXPECT_EQ(header->size, (PictureSize{cover->width, cover->height}));
            EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height);
        }
    }
}

TEST_P(EveryLibrary, ThreadsMayAskAtTheSameTime) {
    const auto library = GetParam().make();
    std::vector<std::thread> threads;
    for (std::uint32_t seed = 0; seed < 4; ++seed) {
        threads.emplace_back([&library, seed] {
            for (std::uint32_t i = 0; i < 60; ++i) {
                const auto list = library->Items({{kAlbum, (i * 7 + seed) % 30}}, kTrack);
                EXPECT_FALSE(list->empty());
                if (i % 20 == 0) {
                    library->Cover(list->front());
                }
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
}

INSTANTIATE_TEST_SUITE_P(Makers, EveryLibrary,
                         testing::Values(Maker{"BuiltIn", MakeBuiltInLibrary},
                                         Maker{"Synthetic", [] { return MakeSyntheticLibrary(1200); }}),
                         [](const auto& instance) { return instance.param.name; });

TEST(LibraryItems, WhatDoesNotExistIsAnEmptyList) {
    const auto library = MakeBuiltInLibrary();
    const auto artists = static_cast<std::uint32_t>(library->Items({}, kArtist)->size());
    const std::vector<std::pair<std::vector<PathStep>, std::uint32_t>> cases{
        {{{kArtist, artists}}, kTrack},
        {{{kArtist, UINT32_MAX}}, kAlbum},
        {{{kPodcast, 0}}, kTrack},
        {{{0, 0}}, kTrack},
        {{{kArtist, 0}, {kAlbum, 99}, {kTrack, 0}}, kTrack},
        {{}, kAudiobook},
        {{}, kPodcast},
        {{}, kTopLevel},
        {{}, 0},
        {{}, kArtist | kAlbum}};
    for (const auto& [path, category] : cases) {
        EXPECT_TRUE(library->Items(path, category)->empty()) << category;
    }
    EXPECT_EQ(library->ItemName(kArtist, artists), "");
    EXPECT_EQ(library->ItemName(kTopLevel, 0), "");
}

TEST(LibraryItems, ATrackNarrowsToItself) {
    const auto library = MakeBuiltInLibrary();
    const auto list = library->Items({{kGenre, 3}}, kTrack);
    for (std::uint32_t i = 0; i < list->size(); ++i) {
        EXPECT_EQ(*library->Items({{kGenre, 3}, {kTrack, i}}, kTrack), ItemList{(*list)[i]});
    }
}

TEST(LibraryItems, AskingAgainGivesTheSameListAndALongPathEnds) {
    const auto library = MakeSyntheticLibrary(5000);
    EXPECT_EQ(library->Items({}, kTrack), library->Items({}, kTrack));
    const std::vector<PathStep> path(20000, PathStep{kArtist, 0});
    EXPECT_EQ(library->Items(path, kTrack), library->Items({{kArtist, 0}}, kTrack));
}

TEST(BuiltInLibrary, HasWhatAUserInterfaceMustCopeWith) {
    const auto library = MakeBuiltInLibrary();
    EXPECT_GE(library->Items({}, kArtist)->size(), 12U);
    EXPECT_GE(library->Items({}, kAlbum)->size(), 30U);
    EXPECT_GE(library->TrackCount(), 300U);
    EXPECT_GE(library->Items({}, kPlaylist)->size(), 4U);
    EXPECT_GE(library->Items({}, kGenre)->size(), 8U);
    EXPECT_GE(library->Items({}, kComposer)->size(), 8U);
    std::set<std::uint32_t> rates;
    // Cut after 254 or 255 bytes, as the records of titles and lists do, it ends amid a character.
    const auto isCutAmid = [](std::string_view name) {
        return name.size() > 255 && (name[254] & 0xC0) == 0x80 && (name[255] & 0xC0) == 0x80;
    };
    bool hasTitleCutAmid = false;
    bool hasAlbumCutAmid = false;
    for (std::uint32_t i = 0; i < library->TrackCount(); ++i) {
        const TrackInfo info = library->Track(i);
        rates.insert(info.sampleRate);
        EXPECT_GE(info.durationMs, 120000U);
        EXPECT_LE(info.durationMs, 360000U);
        EXPECT_EQ(CleanName(info.title), info.title);
        hasTitleCutAmid |= isCutAmid(info.title);
        hasAlbumCutAmid |= isCutAmid(info.album);
    }
    EXPECT_EQ(rates, (std::set<std::uint32_t>{32000, 44100, 48000}));
    EXPECT_TRUE(hasTitleCutAmid);
    EXPECT_TRUE(hasAlbumCutAmid);
    const std::uint32_t tinHarbour = PositionOf(*library, {}, kArtist, "The Tin Harbour");
    EXPECT_EQ(PositionOf(*library, {{kArtist, tinHarbour}}, kAlbum, "Live at the Boathouse"), 1U);
}

TEST(BuiltInLibrary, CoversDifferInSizeAndOneAlbumHasNone) {
    const auto library = MakeBuiltInLibrary();
    std::set<std::pair<std::uint32_t, std::uint32_t>> sizes;
    int without = 0;
    for (std::uint32_t i = 0; i < library->Items({}, kAlbum)->size(); ++i) {
        const std::uint32_t track = library->Items({{kAlbum, i}}, kTrack)->front();
        if (const auto cover = library->Cover(track)) {
            sizes.emplace(cover->width, cover->height);
            EXPECT_EQ(cover, library->Cover(track));
        } else {
            ++without;
        }
    }
    EXPECT_EQ(without, 1);
    EXPECT_EQ(sizes, (std::set<std::pair<std::uint32_t, std::uint32_t>>{
                         {300, 300}, {320, 320}, {480, 480}, {640, 640}, {600, 300}}));
}

TEST(SyntheticLibrary, IsTheSameEachTimeAndSpreadOverTheAlphabet) {
    const auto library = MakeSyntheticLibrary(6000);
    const auto again = MakeSyntheticLibrary(6000);
    EXPECT_EQ(library->TrackCount(), 6000U);
    EXPECT_EQ(library->Items({}, kAlbum)->size(), 500U);
    EXPECT_EQ(library->Items({}, kArtist)->size(), 100U);
    for (const std::uint32_t category : {kTrack, kArtist, kAlbum, kPlaylist}) {
        EXPECT_EQ(NamesOf(*library, {}, category), NamesOf(*again, {}, category));
    }
    std::map<unsigned char, int> letters;
    for (const std::string& name : NamesOf(*library, {}, kTrack)) {
        ++letters[LetterOf(name)];
    }
    for (int letter = 'a'; letter <= 'z'; ++letter) {
        EXPECT_GT(letters[static_cast<unsigned char>(letter)], 50) << letter;
    }
    EXPECT_EQ(MakeSyntheticLibrary(0)->TrackCount(), 0U);
    EXPECT_TRUE(MakeSyntheticLibrary(0)->Items({}, kTrack)->empty());
    // Beyond the pairs of words that there are, albums still have a name each.
    const auto large = MakeSyntheticLibrary(50000);
    const Names albums = NamesOf(*large, {}, kAlbum);
    EXPECT_EQ(std::set(albums.begin(), albums.end()).size(), albums.size());
    EXPECT_EQ(albums.size(), 4167U);
}

class LibraryFromEnvironment : public testing::Test {
  protected:
    void TearDown() override {
        unsetenv("DEVICE_SIMULATOR_LIBRARY");
        unsetenv("DEVICE_SIMULATOR_TRACKS");
    }
};

TEST_F(LibraryFromEnvironment, TakesTheNumberOrSaysWhatIsWrongWithIt) {
    const std::size_t builtIn = MakeBuiltInLibrary()->TrackCount();
    const std::vector<std::tuple<const char*, std::size_t, bool>> cases{
        {"24", 24, false},         {"0", 0, false},        {"", builtIn, false},
        {"many", builtIn, true},   {"-1", builtIn, true},  {"12x", builtIn, true},
        {" 5", builtIn, true},     {"1e3", builtIn, true}, {"99999999999999999999", builtIn, true},
        {"1000001", builtIn, true}};
    for (const auto& [text, tracks, complains] : cases) {
        setenv("DEVICE_SIMULATOR_TRACKS", text, 1);
        testing::internal::CaptureStderr();
        EXPECT_EQ(MakeLibraryFromEnvironment()->TrackCount(), tracks) << text;
        const std::string output = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), complains ? 1 : 0) << output;
    }
}

TEST_F(LibraryFromEnvironment, AFolderGoesFirst) {
    setenv("DEVICE_SIMULATOR_TRACKS", "24", 1);
    setenv("DEVICE_SIMULATOR_LIBRARY", "/nonexistent/music", 1);
    testing::internal::CaptureStderr();
    EXPECT_EQ(MakeLibraryFromEnvironment()->TrackCount(), 0U);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("/nonexistent/music"), std::string::npos);
}

}  // namespace
}  // namespace DeviceSimulator
