#include "IpodService/BrowsePaging.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

/// What the array holds once the fetches are done, by the item's index on the device.
std::vector<std::int64_t> PageItems(const PagePlan& plan, u32 total) {
    std::vector<std::int64_t> items(plan.count, -1);
    for (const PageFetch& fetch : plan) {
        EXPECT_LE(std::uint64_t{fetch.start} + fetch.count, total);
        for (u32 i = 0; i < fetch.count; ++i) {
            items.at(fetch.offset + i) = fetch.start + i;
        }
    }
    return items;
}

TEST(PlanPageTest, TakesEveryPageCircularly) {
    for (u32 total = 0; total <= 11; ++total) {
        for (i32 start = -25; start <= 25; ++start) {
            for (i32 count = -1; count <= 13; ++count) {
                const auto size = static_cast<i32>(total);
                std::vector<std::int64_t> expected;
                for (i32 i = 0; i < std::min(count, size); ++i) {
                    expected.push_back(count > size ? i : (start + i + 10 * size * size) % size);
                }
                EXPECT_EQ(PageItems(PlanPage(total, start, count), total), expected)
                    << total << " items, page " << start << ", " << count;
            }
        }
    }
}

TEST(PlanPageTest, SurvivesTheLimitsOfItsNumbers) {
    const struct {
        u32 total;
        i32 start;
        i32 count;
        std::vector<PageFetch> fetches;
    } cases[] = {{100000, 0, INT_MAX, {{0, 100000, 0}}},
                 {1'000'000, -1, 1'000'000, {{999'999, 1, 0}, {0, 999'999, 1}}},
                 {1'000'001, 0, INT_MAX, {}},
                 {INT_MAX, INT_MAX, INT_MAX, {}},
                 {INT_MAX, INT_MIN, 2, {{INT_MAX - 1, 1, 0}, {0, 1, 1}}},
                 {100, INT_MIN, 10, {{52, 10, 0}}},
                 {100, INT_MAX, 60, {{47, 53, 0}, {0, 7, 53}}},
                 {0x80000000u, 0, 10, {}}};
    for (const auto& [total, start, count, fetches] : cases) {
        const PagePlan plan = PlanPage(total, start, count);
        EXPECT_EQ(std::vector<PageFetch>(plan.begin(), plan.end()), fetches) << total << ", page " << start;
    }
}

TEST(FilteredPositionsTest, WrapShortPagesAndShowTheWholeListForLongOnes) {
    using Positions = std::vector<std::size_t>;
    EXPECT_EQ(FilteredPositions(5, INT_MIN, 3), (Positions{2, 3, 4}));
    EXPECT_EQ(FilteredPositions(5, -1, 2), (Positions{4, 0}));
    EXPECT_EQ(FilteredPositions(5, 5, 1), Positions{0});
    EXPECT_EQ(FilteredPositions(5, INT_MAX, 4), (Positions{2, 3, 4, 0}));
    EXPECT_EQ(FilteredPositions(5, 3, INT_MAX), (Positions{0, 1, 2, 3, 4}));
    EXPECT_EQ(FilteredPositions(5, 0, -3), Positions{});
    EXPECT_EQ(FilteredPositions(0, 2, 4), Positions{});
}

}  // namespace
