#include "IpodService/LetterJump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>

#include "IpodService/BrowsePaging.h"
#include "IpodService/InitialKey.h"

namespace {

using Names = std::vector<std::string>;

/// A level of these names, paged as the manager pages it.
struct NameList {
    BrowsePage Fetch(i32 start, i32 count) {
        ++fetches;
        const PagePlan plan = PlanPage(static_cast<u32>(names.size()), start, count);
        BrowsePage page{AllocateItems(plan.count), plan.count};
        for (const PageFetch& fetch : plan) {
            for (u32 i = 0; i < fetch.count; ++i) {
                names[fetch.start + i].copy(page.items[fetch.offset + i].name, sizeof(BrowseItem::name));
            }
        }
        return page;
    }
    i32 Jump(JumpFunction jump, i32 start) {
        fetches = 0;
        const auto fetch = [this](i32 at, i32 count) { return Fetch(at, count); };
        const i32 index = jump({static_cast<i32>(names.size()), fetch}, start);
        EXPECT_LE(fetches, 5);
        return index;
    }
    i32 Next(i32 start) { return Jump(NextInitialIndex, start); }
    i32 Previous(i32 start) { return Jump(PreviousInitialIndex, start); }

    Names names;
    int fetches = 0;  ///< of the last jump
};

TEST(LetterJumpTest, FindsTheNeighbouringLetters) {
    const Names bands = {"Amber", "AB/CD", "The Brooks", "Bluff"};
    const struct {
        Names names;
        i32 start;
        i32 next;
        i32 previous;
    } cases[] = {{bands, 0, 2, 0},
                 {bands, 3, 3, 1},
                 {{"911", "Quill", "Rust"}, 0, 1, 0},
                 {{"1 Gull", "Quill", "Rust"}, 0, 2, 0},
                 {{"The 9", "9", "the 99", "8"}, 2, 3, 0},
                 {{"The Brooks", "bluff", "The ", "tHe Ark"}, 1, 2, 0},
                 {{"The Brooks", "bluff", "The ", "tHe Ark"}, 3, 3, 2},
                 {{"\xC3\x84", "\xC3\x89", "\xE3\x81\x82", "\xE2\x98\xAE"}, 0, 3, 0},
                 {{"Amber", "", "", "Bluff"}, 1, 3, 0},  // no name, no letter
                 {{}, INT_MIN, -1, 0},
                 {bands, 4, 3, 3},   // wraps to the first item; the nearest before is the last
                 {bands, -1, 0, 0},  // the last item's letter, looked for from the first item on
                 {bands, INT_MAX, 3, INT_MAX - 100 + 1},
                 {{std::string(256, 'x'), std::string(256, 'y')}, 0, 1, 0},
                 {{"Them", "The Brooks", "[", "{"}, 0, 1, 0}};
    for (const auto& [names, start, next, previous] : cases) {
        SCOPED_TRACE(testing::PrintToString(names) + " from " + std::to_string(start));
        NameList list{names};
        EXPECT_EQ(list.Next(start), next);
        EXPECT_EQ(list.Previous(start), previous);
    }
}

TEST(LetterJumpTest, EndsWhateverTheDeviceDelivers) {
    int fetches = 0;
    i32 most = kAlphaPageSize;  // that are delivered
    const auto fetch = [&](i32, i32 count) {
        ++fetches;
        BrowsePage page{AllocateItems(kAlphaPageSize), count > most ? 0 : static_cast<u32>(count)};
        page.items[0].name[0] = 'A';
        return page;
    };
    const PagedList endless = {INT_MAX, fetch};
    EXPECT_EQ(NextInitialIndex(endless, 0), INT_MAX - 1);
    EXPECT_EQ(PreviousInitialIndex(endless, INT_MAX), 0);
    EXPECT_LE(fetches, 2 * (1 + kMostItems / kAlphaPageSize));
    most = 1;
    EXPECT_EQ(NextInitialIndex({300, fetch}, 7), 299);
    EXPECT_EQ(PreviousInitialIndex({300, fetch}, 250), 0);
}

TEST(InitialKeyTest, IsTheByteBehindALeadingArticle) {
    const std::pair<const char*, char> cases[] = {
        {"amber", 'a'},       {"The Brooks", 'B'}, {"tHE brooks", 'b'},   {"The ", 'T'},
        {"Them", 'T'},        {"The  Gap", ' '},   {"The 45s", '4'},      {"99", '9'},
        {"Other The A", 'O'}, {"Th", 'T'},         {"\xC3\x89t", '\xC3'}, {"The \xC3\x89t", '\xC3'}};
    for (const auto& [name, key] : cases) {
        EXPECT_EQ(InitialKey(name), static_cast<unsigned char>(key)) << name;
    }
    EXPECT_EQ(InitialKey(""), std::nullopt);
}

TEST(LetterJumpTest, AgreesWithAWalkOverTheWholeList) {
    std::mt19937 random(1);
    const std::pair<i32, i32> sizesAndRuns[] = {{1, 1},    {2, 1},    {98, 30},   {99, 30},  {100, 30},
                                                {101, 30}, {199, 60}, {200, 120}, {350, 120}};
    for (const auto& [size, run] : sizesAndRuns) {
        NameList list;
        for (i32 i = 0; i < size; ++i) {
            list.names.emplace_back(random() % 8 == 0 ? 0 : 1, static_cast<char>('A' + i / run));
        }
        for (i32 start = 0; start < size; ++start) {
            const auto here = list.names.begin() + start;
            const auto own = InitialKey(*here);
            const auto differs = [&](const std::string& name) {
                return own && !name.empty() && !InitialGroup(*own).Contains(*InitialKey(name));
            };
            const auto next = std::find_if(here, list.names.end(), differs) - list.names.begin();
            EXPECT_EQ(list.Next(start), std::min<std::ptrdiff_t>(next, size - 1)) << start << " of " << size;
            const auto before = std::find_if(std::make_reverse_iterator(here), list.names.rend(), differs);
            EXPECT_EQ(list.Previous(start), std::max<std::ptrdiff_t>(list.names.rend() - before - 1, 0))
                << start << " of " << size;
        }
    }
}

}  // namespace
