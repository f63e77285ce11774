#include "IpodService/LetterJump.h"

#include <algorithm>
#include <cstdint>
#include <optional>

#include "IpodService/BrowsePaging.h"
#include "IpodService/InitialKey.h"
#include "IpodService/RecordText.h"

namespace {

std::optional<unsigned char> KeyOf(const BrowseItem& item) {
    return InitialKey(RecordText(item.name));
}

std::optional<InitialGroup> GroupAt(const PagedList& list, i32 position) {
    const BrowsePage page = list.fetch(position, 1);
    if (page.count == 0) {
        return std::nullopt;
    }
    const std::optional<unsigned char> key = KeyOf(page.items[0]);
    return key ? std::optional(InitialGroup(*key)) : std::nullopt;
}

bool IsOutside(const InitialGroup& group, const BrowseItem& item) {
    const std::optional<unsigned char> key = KeyOf(item);
    return key && !group.Contains(*key);
}

/// Pages are circular, so what lies beyond one round has been seen.
std::int64_t MostToSee(const PagedList& list) {
    return std::min(list.total, kMostItems);
}

std::size_t Index(std::int64_t position) {
    return static_cast<std::size_t>(position);
}

/// Where `group`, to which the item at `start` belongs, is left behind; none when it is not.
std::optional<std::int64_t> FirstOutsideBehind(const PagedList& list, i32 start, const InitialGroup& group) {
    // Fewer items than a page: every fetch gives all of them, from the first one on.
    const bool wholeLevel = list.total < kAlphaPageSize;
    std::int64_t unseen = MostToSee(list);
    for (std::int64_t position = start; position < list.total && unseen > 0;) {
        const BrowsePage page = list.fetch(static_cast<i32>(position), kAlphaPageSize);
        if (page.count == 0) {
            break;
        }
        const std::int64_t base = wholeLevel ? 0 : position;
        for (std::int64_t i = wholeLevel ? std::max<std::int64_t>(position, 0) : 0; i < page.count; ++i) {
            if (IsOutside(group, page.items[Index(i)])) {
                return base + i;
            }
        }
        position += page.count;
        unseen -= page.count;
    }
    return std::nullopt;
}

std::optional<std::int64_t> LastOutsideBefore(const PagedList& list, i32 start, const InitialGroup& group) {
    std::int64_t unseen = MostToSee(list);
    for (i32 position = start; position > 0 && unseen > 0;) {
        const i32 wanted = std::min(position, kAlphaPageSize);
        const i32 first = position - wanted;
        const BrowsePage page = list.fetch(first, wanted);
        if (page.count == 0) {
            break;
        }
        for (std::int64_t i = std::int64_t{page.count} - 1; i >= 0; --i) {
            if (IsOutside(group, page.items[Index(i)])) {
                return first + i;
            }
        }
        position -= wanted;
        unseen -= page.count;
    }
    return std::nullopt;
}

}  // namespace

i32 NextInitialIndex(const PagedList& list, i32 start) {
    const std::int64_t last = std::int64_t{list.total} - 1;
    std::int64_t answer = last;
    if (const std::optional<InitialGroup> group = GroupAt(list, start)) {
        answer = FirstOutsideBehind(list, start, *group).value_or(last);
    }
    // A page that wraps goes on beyond the last item.
    return static_cast<i32>(answer < list.total ? answer : last);
}

i32 PreviousInitialIndex(const PagedList& list, i32 start) {
    const std::optional<InitialGroup> group = GroupAt(list, start);
    return group ? static_cast<i32>(LastOutsideBefore(list, start, *group).value_or(0)) : 0;
}
