#include "IpodService/BrowsePaging.h"

#include <algorithm>
#include <cstdint>

namespace {

/// `position` brought into 0 .. `size` - 1; `size` is above 0.
std::int64_t Wrapped(std::int64_t position, std::int64_t size) {
    const std::int64_t remainder = position % size;
    return remainder < 0 ? remainder + size : remainder;
}

}  // namespace

PagePlan PlanPage(u32 total, i32 start, i32 count) {
    const std::int64_t size = static_cast<i32>(total);
    const std::int64_t wanted = std::min<std::int64_t>(count, size);
    if (wanted <= 0 || wanted > kMostItems) {
        return {};
    }
    const std::int64_t first = count > size ? 0 : Wrapped(start, size);
    const std::int64_t untilEnd = std::min(wanted, size - first);

    PagePlan plan;
    plan.count = static_cast<u32>(wanted);
    plan.fetches[0] = {static_cast<u32>(first), static_cast<u32>(untilEnd), 0};
    plan.fetchCount = 1;
    if (untilEnd < wanted) {
        plan.fetches[1] = {0, static_cast<u32>(wanted - untilEnd), static_cast<u32>(untilEnd)};
        plan.fetchCount = 2;
    }
    return plan;
}

std::vector<std::size_t> FilteredPositions(std::size_t size, i32 start, i32 count) {
    const auto entries = static_cast<std::int64_t>(size);
    const std::int64_t visits = std::min<std::int64_t>(count, entries);
    std::vector<std::size_t> positions;
    if (visits <= 0) {
        return positions;
    }
    const std::int64_t first = count < entries ? Wrapped(start, entries) : 0;
    positions.reserve(static_cast<std::size_t>(visits));
    for (std::int64_t visit = 0; visit < visits; ++visit) {
        positions.push_back(static_cast<std::size_t>((first + visit) % entries));
    }
    return positions;
}
