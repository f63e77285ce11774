// One process's walk through a device's library: the narrowings that it has made, and the ids by which the
// player knows the items of its lists.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "DeviceSimulator/device/SimulatorOptions.h"
#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

/// Not locked: the model's lock guards it.
class BrowseSession {
  public:
    const std::vector<PathStep>& Path() const { return m_path; }
    /// `step` must name an item that stands below the path. A category can be narrowed once only.
    DevMgrResult Narrow(PathStep step);
    DevMgrResult Back();
    void Reset() { m_path.clear(); }

    /// The path that a query means by its parent: `parentCategory` -1 is the whole library; a step of the
    /// present path stands for the path down to it; any other item is one of the whole library's.
    DevMgrResult ParentPath(std::int32_t parentCategory, std::uint32_t parentIndex,
                            std::vector<PathStep>& path) const;

  private:
    std::vector<PathStep> m_path;
};

/// One of the categories that a player lists.
bool IsBrowsable(std::uint32_t category);

/// The items of `category` below `path`; none for what stands below a track.
std::shared_ptr<const ItemList> ItemsBelow(const Library& library, const std::vector<PathStep>& path,
                                           std::uint32_t category);

/// The categories at the top (DEV_MGR_CATEGORY_TOP_LEVEL) or behind `category`, as the interface's masks have
/// them.
DevMgrResult CategoriesBehind(const Library& library, std::uint32_t category, std::uint32_t& mask);

/// The id of `entry`, which stands at `position` of its list.
std::uint32_t IdOf(ItemIds ids, std::uint32_t entry, std::uint32_t position);

/// Where in `list` the item of that id stands; none when it has none such.
std::optional<std::uint32_t> PositionOf(ItemIds ids, const ItemList& list, std::uint32_t id);

/// Where the parent of a query stands: in the list that a step of the path was taken from, else in that of
/// the whole library. A position beyond all lists when no item has that id.
std::uint32_t ParentPosition(ItemIds ids, const Library& library, const std::vector<PathStep>& path,
                             std::uint32_t category, std::uint32_t id);

}  // namespace DeviceSimulator
