// The ids by which a player knows the items of its lists.
#pragma once

#include <cstdint>
#include <optional>

#include "DeviceSimulator/device/BrowseSession.h"
#include "DeviceSimulator/device/Character.h"

namespace DeviceSimulator {

/// The id of `entry`, which stands at `position` of its list.
std::uint32_t IdOf(ItemIds ids, std::uint32_t entry, std::uint32_t position);

/// Where in `list` the item of that id stands; none when it has none such.
std::optional<std::uint32_t> PositionOf(ItemIds ids, const ItemList& list, std::uint32_t id);

/// Where the parent of a query stands: in the list that a step of the path was taken from, else in that of
/// the whole library. A position beyond all lists when no item has that id.
std::uint32_t ParentPosition(ItemIds ids, const Library& library, const std::vector<PathStep>& path,
                             std::uint32_t category, std::uint32_t id);

}  // namespace DeviceSimulator
