#include "IpodService/LetterJump.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>

#include "IpodService/BrowsePaging.h"
#include "IpodService/InitialKey.h"

namespace {

/// A level of these names, paged as the manager pages it.
class NameList {
  public:
    explicit NameList(std::vector<std::string> names) : m_names(std::move(names)) {}

    PagedList List() {
        return {static_cast<i32>(m_names.size()),
                [this](i32 start, i32& count) { return Fetch(start, count); }};
    }
    i32 Next(i32 start) { return NextInitialIndex(List(), start); }
    i32 Previous(i32 start) { return PreviousInitialIndex(List(), start); }

    void FailFrom(std::size_t fetch) { m_failFrom = fetch; }
    std::vector<i32> TakeCounts() { return std::exchange(m_counts, {}); }

  private:
    BrowseItemArray Fetch(i32 start, i32& count) {
        m_counts.push_back(count);
        const PagePlan plan = PlanPage(static_cast<u32>(m_names.size()), start, count);
        count = static_cast<i32>(plan.count);
        if (count == 0 || m_counts.size() > m_failFrom) {
            count = 0;
            return nullptr;
        }
        BrowseItemArray items(static_cast<BrowseItem*>(std::calloc(plan.count, sizeof(BrowseItem))));
        for (const PageFetch& fetch : plan) {
            for (u32 i = 0; i < fetch.count; ++i) {
                const std::string& name = m_names[fetch.start + i];
                name.copy(items[fetch.offset + i].name, sizeof(BrowseItem::name));
            }
        }
        return items;
    }

    std::vector<std::string> m_names;
    std::vector<i32> m_counts;
    std::size_t m_failFrom = SIZE_MAX;
};

std::vector<std::string> Runs(std::initializer_list<std::pair<const char*, std::size_t>> runs) {
    std::vector<std::string> names;
    for (const auto& [name, length] : runs)
        names.insert(names.end(), length, name);
    return names;
}

TEST(LetterJump, FindsTheNeighbouringLetters) {
    struct Case {
        std::vector<std::string> names;
        i32 start;
        i32 next;
        i32 previous;
    };
    const std::vector<std::string> bands = {"Abba", "AC/DC", "The Beatles", "Blur"};
    const Case cases[] = {
        {bands, 0, 2, 0},
        {bands, 3, 3, 1},
        {{"911", "Queen", "Rush"}, 0, 1, 0},
        {{"1 Giant", "Queen", "Rush"}, 0, 2, 0},
        {{"abba", "Abc", "b", "B"}, 0, 2, 0},
        {{"abba", "Abc", "b", "B"}, 3, 3, 1},
        {{"Abba", "", "", "Blur"}, 3, 3, 0},
        {{"Abba", "", "", "Blur"}, 1, 3, 0},  // no name, no letter
        {{}, 0, -1, 0},
        {{}, INT_MIN, -1, 0},
        {bands, 4, 3, 3},   // wraps to the first item; the nearest before is the last
        {bands, -1, 0, 0},  // the last item's letter, looked for from the first item on
        {bands, INT_MIN, 2, 0},
        {bands, INT_MAX, 3, INT_MAX - 100 + 1},
        {Runs({{"A", 150}, {"B", 150}}), -10, 0, 0},
        {Runs({{"A", 150}, {"B", 150}}), -200, -150, 0},
        {Runs({{"A", 300}}), INT_MIN, 299, 0},
        {Runs({{"A", 300}}), INT_MAX, 299, 0},
        {{std::string(256, 'x'), std::string(256, 'y')}, 0, 1, 0},
    };
    for (const Case& c : cases) {
        NameList names(c.names);
        EXPECT_EQ(names.Next(c.start), c.next) << testing::PrintToString(c.names) << " from " << c.start;
        EXPECT_EQ(names.Previous(c.start), c.previous)
            << testing::PrintToString(c.names) << " from " << c.start;
        EXPECT_LE(names.TakeCounts().size(), 10u);
    }
}

TEST(LetterJump, AgreesWithAWalkOverTheWholeList) {
    std::mt19937 random(1);
    for (const auto& [size, run] : {std::pair<std::size_t, std::size_t>{1, 1},
                                    {2, 1},
                                    {98, 30},
                                    {99, 30},
                                    {100, 30},
                                    {101, 30},
                                    {199, 60},
                                    {200, 120},
                                    {350, 120}}) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < size; ++i)
            names.emplace_back(random() % 8 == 0 ? 0 : 1, static_cast<char>('A' + i / run));
        NameList list(names);
        const auto total = static_cast<i32>(size);
        for (i32 start = 0; start < total; ++start) {
            const auto own = InitialKey(names[static_cast<std::size_t>(start)]);
            const auto differs = [&](const std::string& name) {
                return own && !name.empty() && !InitialGroup(*own).Contains(*InitialKey(name));
            };
            const auto here = names.begin() + start;
            const auto next = std::find_if(here, names.end(), differs);
            EXPECT_EQ(list.Next(start), next == names.end() ? total - 1 : next - names.begin())
                << start << " of " << size;
            const auto previous = std::find_if(std::make_reverse_iterator(here), names.rend(), differs);
            EXPECT_EQ(list.Previous(start), previous == names.rend() ? 0 : names.rend() - previous - 1)
                << start << " of " << size;
        }
    }
}

TEST(LetterJump, ReadsOneItemAndPagesOfOneHundredWhileTheyCome) {
    NameList names(Runs({{"A", 500}, {"B", 99500}}));
    EXPECT_EQ(names.Next(0), 500);
    EXPECT_EQ(names.TakeCounts(), (std::vector<i32>{1, 100, 100, 100, 100, 100, 100}));
    EXPECT_EQ(names.Previous(750), 499);
    EXPECT_EQ(names.TakeCounts(), (std::vector<i32>{1, 100, 100, 100}));
    for (const std::size_t fetches : {0u, 1u, 2u}) {
        names.FailFrom(fetches);
        EXPECT_EQ(names.Next(0), 99999);
        names.TakeCounts();
        EXPECT_EQ(names.Previous(99999), 0);
        names.TakeCounts();
    }
}

TEST(LetterJump, GivesUpOnATotalThatNoPlayerHas) {
    int fetches = 0;
    const PagedList endless = {INT_MAX, [&](i32, i32& count) {
                                   ++fetches;
                                   auto* items =
                                       std::calloc(static_cast<std::size_t>(count), sizeof(BrowseItem));
                                   BrowseItemArray page(static_cast<BrowseItem*>(items));
                                   page[0].name[0] = 'A';
                                   return page;
                               }};
    EXPECT_EQ(NextInitialIndex(endless, 0), INT_MAX - 1);
    EXPECT_EQ(PreviousInitialIndex(endless, INT_MAX), 0);
    EXPECT_LE(fetches, 20002);
}

}  // namespace
