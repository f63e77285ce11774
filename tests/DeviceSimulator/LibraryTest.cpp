#include "DeviceSimulator/music/Library.h"

#include <algorithm>
#include <set>

#include "DeviceSimulator/media/PictureCover.h"
#include "DeviceSimulator/music/LibraryText.h"
#include "LibraryTestFiles.h"

namespace DeviceSimulator {
namespace {

/// The tracks below `path`, and below everything that it can be narrowed to in `chain`.
std::size_t CountTracks(const Library& library, std::vector<PathStep> path,
                        const std::vector<std::uint32_t>& chain) {
    if (path.size() == chain.size()) {
        return library.Items(path, DEV_MGR_CATEGORY_TRACK)->size();
    }
    const std::uint32_t category = chain[path.size()];
    const std::size_t items = library.Items(path, category)->size();
    path.emplace_back();
    std::size_t count = 0;
    for (std::uint32_t i = 0; i < items; ++i) {
        path.back() = {category, i};
        count += CountTracks(library, path, chain);
    }
    return count;
}

void ExpectSortedAndLeadingToEachTrackOnce(const Library& library) {
    for (const std::uint32_t category :
         {DEV_MGR_CATEGORY_ARTIST, DEV_MGR_CATEGORY_ALBUM, DEV_MGR_CATEGORY_GENRE, DEV_MGR_CATEGORY_COMPOSER,
          DEV_MGR_CATEGORY_TRACK}) {
        const auto list = library.Items({}, category);
        ASSERT_FALSE(list->empty()) << category;
        EXPECT_EQ(std::set(list->begin(), list->end()).size(), list->size()) << category;
        const Names names = NamesOf(library, {}, category);
        EXPECT_TRUE(std::is_sorted(names.begin(), names.end(), [](const auto& a, const auto& b) {
            return NameOrder().Key(a) < NameOrder().Key(b);
        })) << category;
    }
    std::size_t withGenre = 0;
    for (std::uint32_t track = 0; track < library.TrackCount(); ++track) {
        withGenre += library.Track(track).genre.empty() ? 0U : 1U;
    }
    using Chain = std::vector<std::uint32_t>;
    for (const Chain& chain : {Chain{DEV_MGR_CATEGORY_GENRE, DEV_MGR_CATEGORY_ARTIST, DEV_MGR_CATEGORY_ALBUM},
                               Chain{DEV_MGR_CATEGORY_ALBUM}, Chain{DEV_MGR_CATEGORY_ARTIST}}) {
        EXPECT_EQ(CountTracks(library, {}, chain), chain.size() == 1 ? library.TrackCount() : withGenre);
    }
    for (std::uint32_t i = 0; i < 30; ++i) {
        if (const auto cover = library.Cover(
                library.Items({{DEV_MGR_CATEGORY_ALBUM, i}}, DEV_MGR_CATEGORY_TRACK)->front())) {
            EXPECT_EQ(SizeOf(cover->bytes), (ImageSize{cover->width, cover->height}));
            EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height);
        }
    }
    // What does not exist is an empty list, and a path may be of any length.
    EXPECT_TRUE(library.Items({{DEV_MGR_CATEGORY_ARTIST, UINT32_MAX}}, DEV_MGR_CATEGORY_ALBUM)->empty());
    EXPECT_TRUE(
        library
            .Items({{DEV_MGR_CATEGORY_ARTIST, 0}, {DEV_MGR_CATEGORY_ALBUM, 99}, {DEV_MGR_CATEGORY_TRACK, 0}},
                   DEV_MGR_CATEGORY_TRACK)
            ->empty());
    const std::vector<PathStep> path(20000, PathStep{DEV_MGR_CATEGORY_ARTIST, 0});
    EXPECT_EQ(library.Items(path, DEV_MGR_CATEGORY_TRACK),
              library.Items({{DEV_MGR_CATEGORY_ARTIST, 0}}, DEV_MGR_CATEGORY_TRACK));
}

TEST(LibraryTest, MadeUpOnesAreSortedAndLeadToEachTrackOnce) {
    ExpectSortedAndLeadingToEachTrackOnce(*MakeBuiltInLibrary());
    ExpectSortedAndLeadingToEachTrackOnce(*MakeSyntheticLibrary(1200));
}

TEST(LibraryTest, KeysIgnoreCaseAndArticleAndNamesBecomeCleanText) {
    const Names ascending{"",     "\"Quoted\"", "1 Way",     "Abba",  "the Beatles", "beta", "THE Gamma",
                          "The ", "Them",       "The Zebra", "Äpfel", "éclair",      "анна", "日本"};
    const NameOrder order;
    for (std::size_t i = 1; i < ascending.size(); ++i) {
        EXPECT_LT(order.Key(ascending[i - 1]), order.Key(ascending[i])) << ascending[i];
    }
    EXPECT_EQ(order.Key("The Beatles"), order.Key("bEATLES"));
    for (const auto& [locale, isBehind] : {std::pair("sv", true), {"de-AT", false}}) {
        const NameOrder local({SortRule::WithoutArticle, locale});
        EXPECT_EQ(local.Key("Zoo") < local.Key("The Ärzte"), isBehind) << locale;
        EXPECT_LT(local.Key("a" + std::string(1000, 'b')), local.Key("A" + std::string(1000, 'b') + "c"));
    }
    EXPECT_FALSE(IsLocale("") || IsLocale("articel"));
    EXPECT_EQ(CleanName(" two\nlines\t"), "two lines");
    EXPECT_EQ(CleanName({"a\0z", 3}), "a\xEF\xBF\xBDz");
}

TEST(LibraryTest, AlbumsAndArtistsAreInTheOrderOfTheRecord) {
    LibraryBuilder builder;
    for (const auto& tags : {Tags("late", "A", "Zed", 2, 1), Tags("unnumbered", "A", "Zed"),
                             Tags("third", "A", "Zed", 1, 10), Tags("second", "A", "Zed", 0, 2),
                             Tags("first", "A", "Zed", 1, 1), Tags("zz", "A", "alpha", 1, 1)}) {
        builder.Add(tags);
    }
    const auto library = builder.Build();
    EXPECT_EQ(NamesOf(*library, {{DEV_MGR_CATEGORY_ARTIST, 0}}, DEV_MGR_CATEGORY_TRACK),
              (Names{"zz", "first", "second", "third", "unnumbered", "late"}));
}

TEST(LibraryTest, AnAlbumIsItsTitleAndWhoseItIs) {
    LibraryBuilder builder;
    builder.Add(Tags("1", "Ann", "Hits"));
    builder.Add(Tags("2", "Bob", "Hits"));
    for (const char* artist : {"Cid", "Dan"}) {
        auto guest = Tags("3", artist, "Duets");
        guest.albumArtist = "Cid";
        builder.Add(guest);
        auto sampler = Tags("4", artist, "Sampler");
        sampler.compilation = 1;
        builder.Add(sampler);
    }
    const auto library = builder.Build();
    EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_ALBUM), (Names{"Duets", "Hits", "Hits", "Sampler"}));
    EXPECT_EQ(NamesOf(*library, {}, DEV_MGR_CATEGORY_ARTIST), (Names{"Ann", "Bob", "Cid", "Dan"}));
    EXPECT_EQ(NamesOf(*library, {{DEV_MGR_CATEGORY_ALBUM, 2}}, DEV_MGR_CATEGORY_ARTIST), (Names{"Bob"}));
    EXPECT_EQ(NamesOf(*library, {{DEV_MGR_CATEGORY_ARTIST, 3}}, DEV_MGR_CATEGORY_ALBUM),
              (Names{"Duets", "Sampler"}));
}

Bytes Padded(Bytes bytes, std::size_t size) {
    bytes.resize(std::max(size, bytes.size()));
    return bytes;
}

TEST(LibraryTest, ACoverFitsItsRoomAndKeepsItsAspect) {
    struct Case {
        Bytes picture;
        bool passes;  ///< as it is
        ImageSize result;
    };
    const Case cases[] = {
        {MakeJpeg({1200, 900}), true, {1200, 900}},
        {Padded(MakeJpeg({64, 64}), 8192), true, {64, 64}},
        {Padded(MakeJpeg({64, 64}), 8193), false, {64, 64}},
        {Padded(MakeJpeg({1100, 1100}), kMostCoverBytes), true, {1100, 1100}},
        {Padded(MakeJpeg({1100, 1100}), kMostCoverBytes + 1), false, {640, 640}},
        {Padded(MakeJpeg({16, 1600}), 60000), false, {6, 640}},
        {MakePng({333, 999}), false, {213, 640}},
        {MakePng({8, 4}), false, {32, 16}},  // too small for any JPEG to fit twice its pixels
    };
    for (const Case& c : cases) {
        const auto cover = MakeCover(c.picture);
        ASSERT_TRUE(cover) << c.result.width;
        EXPECT_EQ(cover->bytes == c.picture, c.passes) << c.result.width;
        EXPECT_EQ((ImageSize{cover->width, cover->height}), c.result);
        EXPECT_EQ(SizeOf(cover->bytes), c.result);
        EXPECT_LE(cover->bytes.size(), std::size_t{2} * cover->width * cover->height) << c.result.width;
    }
}

}  // namespace
}  // namespace DeviceSimulator
