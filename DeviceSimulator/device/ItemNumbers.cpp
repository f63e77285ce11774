#include "DeviceSimulator/device/ItemNumbers.h"

namespace DeviceSimulator {

std::uint32_t IdOf(ItemIds ids, std::uint32_t entry, std::uint32_t position) {
    // An odd factor: no two entries below 2^24 have one id.
    return ids == ItemIds::Positions ? position : (entry * 40503U + 7919U) & 0xFFFFFFU;
}

std::optional<std::uint32_t> PositionOf(ItemIds ids, const ItemList& list, std::uint32_t id) {
    if (ids == ItemIds::Positions) {
        return id < list.size() ? std::optional(id) : std::nullopt;
    }
    for (std::uint32_t position = 0; position < list.size(); ++position) {
        if (IdOf(ids, list[position], position) == id) {
            return position;
        }
    }
    return std::nullopt;
}

std::uint32_t ParentPosition(ItemIds ids, const Library& library, const std::vector<PathStep>& path,
                             std::uint32_t category, std::uint32_t id) {
    if (ids == ItemIds::Positions || !IsBrowsable(category)) {
        return id;
    }
    for (auto step = path.begin(); step != path.end(); ++step) {
        if (step->category != category) {
            continue;
        }
        const auto list = ItemsBelow(library, {path.begin(), step}, category);
        if (step->position < list->size() && IdOf(ids, (*list)[step->position], step->position) == id) {
            return step->position;
        }
    }
    return PositionOf(ids, *ItemsBelow(library, {}, category), id).value_or(UINT32_MAX);
}

}  // namespace DeviceSimulator
