#include "DeviceSimulator/LibraryBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "DeviceSimulator/LibraryText.h"
#include "tests/DeviceSimulator/LibraryTestFiles.h"

namespace DeviceSimulator {
namespace {

TEST(LibraryText, KeysIgnoreCaseAndArticleAndKeepLettersTogether) {
    const Names ascending{"",     "\"Quoted\"", "1 Way",     "Abba",  "the Beatles", "beta",   "THE Gamma",
                          "The ", "Them",       "The Zebra", "Äpfel", "éclair",      "Ökonom", "Борис",
                          "анна", "שיר",        "أغنية",     "日本",  "한국"};
    for (std::size_t i = 1; i < ascending.size(); ++i) {
        const auto isOneGroup = [](const std::string& name) { return name == "Борис" || name == "анна"; };
        if (isOneGroup(ascending[i]) && isOneGroup(ascending[i - 1])) {
            EXPECT_GT(SortKey(ascending[i - 1]), SortKey(ascending[i]));  // by the alphabet, not by case
        } else {
            EXPECT_LT(SortKey(ascending[i - 1]), SortKey(ascending[i])) << ascending[i];
        }
    }
    EXPECT_EQ(SortKey("The Beatles"), SortKey("bEATLES"));
}

TEST(LibraryText, NamesBecomeCleanText) {
    const std::vector<std::pair<std::string, std::string>> cases{{"", ""},
                                                                 {"  plain  ", "plain"},
                                                                 {"two\nlines\t", "two lines"},
                                                                 {std::string("a\0b", 3),
                                                                  "a\xEF\xBF\xBD"
                                                                  "b"},
                                                                 {"\xFF\xFEz", "\xEF\xBF\xBD\xEF\xBF\xBDz"},
                                                                 {"Caf\xE9", "Caf\xEF\xBF\xBD"},
                                                                 {" \t\r\n", ""},
                                                                 {"日本", "日本"}};
    for (const auto& [bytes, name] : cases) {
        EXPECT_EQ(CleanName(bytes), name);
    }
    std::string longName = "x";
    while (longName.size() < 5000) {
        longName += "é";
    }
    const std::string cut = CleanName(longName);
    EXPECT_EQ(cut.size(), kMaxNameBytes - 1);  // not half of an é
    EXPECT_EQ(cut, longName.substr(0, cut.size()));
}

TEST(LibraryBuilder, AlbumsAndArtistsAreInTheOrderOfTheRecord) {
    LibraryBuilder builder;
    for (const auto& tags : {Tags("late", "A", "Zed", 2, 1), Tags("unnumbered", "A", "Zed"),
                             Tags("third", "A", "Zed", 1, 10), Tags("second", "A", "Zed", 0, 2),
                             Tags("first", "A", "Zed", 1, 1), Tags("zz", "A", "alpha", 1, 1)}) {
        builder.Add(tags);
    }
    const auto library = builder.BuildWithDrawnCovers();
    EXPECT_EQ(NamesOf(*library, {{kAlbum, 1}}, kTrack),
              (Names{"first", "second", "third", "unnumbered", "late"}));
    EXPECT_EQ(NamesOf(*library, {{kArtist, 0}}, kTrack),
              (Names{"zz", "first", "second", "third", "unnumbered", "late"}));
    EXPECT_EQ(NamesOf(*library, {}, kTrack), (Names{"first", "late", "second", "third", "unnumbered", "zz"}));
}

TEST(LibraryBuilder, AnAlbumIsItsTitleAndWhoseItIs) {
    LibraryBuilder builder;
    builder.Add(Tags("1", "Ann", "Hits"));
    builder.Add(Tags("2", "Bob", "Hits"));
    for (const char* artist : {"Cid", "Dan"}) {
        auto guest = Tags("3", artist, "Duets");
        guest.albumArtist = "Cid";
        builder.Add(guest);
        auto sampler = Tags("4", artist, "Sampler");
        sampler.compilation = true;
        builder.Add(sampler);
    }
    builder.Add(Tags("5", "", ""));
    const auto library = builder.BuildWithDrawnCovers();
    EXPECT_EQ(NamesOf(*library, {}, kAlbum), (Names{"Duets", "Hits", "Hits", "Sampler", "Unknown Album"}));
    EXPECT_EQ(NamesOf(*library, {}, kArtist), (Names{"Ann", "Bob", "Cid", "Dan", "Unknown Artist"}));
    EXPECT_EQ(library->Items({{kAlbum, 0}}, kTrack)->size(), 2U);
    EXPECT_EQ(NamesOf(*library, {{kAlbum, 2}}, kArtist), (Names{"Bob"}));
    EXPECT_EQ(NamesOf(*library, {{kArtist, 3}}, kAlbum), (Names{"Duets", "Sampler"}));
    EXPECT_TRUE(library->Items({}, kGenre)->empty());
    EXPECT_TRUE(library->Items({}, kComposer)->empty());
}

TEST(LibraryBuilder, PlaylistsKeepTheirOrderAndTheirDuplicates) {
    LibraryBuilder builder;
    const auto b = builder.Add(Tags("b", "B", "")).track;
    const auto a = builder.Add(Tags("a", "A", "")).track;
    const auto c = builder.Add(Tags("c", "A", "")).track;
    builder.AddPlaylist("Z first", {c, b, c, a});
    builder.AddPlaylist("A second", {});
    const auto library = builder.BuildWithDrawnCovers();
    EXPECT_EQ(NamesOf(*library, {}, kPlaylist), (Names{"Z first", "A second"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 0}}, kTrack), (Names{"c", "b", "c", "a"}));
    EXPECT_EQ(NamesOf(*library, {{kPlaylist, 0}, {kArtist, 0}}, kTrack), (Names{"c", "c", "a"}));
    EXPECT_EQ(NamesOf(*library, {{kArtist, 1}}, kPlaylist), (Names{"Z first"}));
    EXPECT_TRUE(library->Items({{kPlaylist, 1}}, kTrack)->empty());
}

}  // namespace
}  // namespace DeviceSimulator
