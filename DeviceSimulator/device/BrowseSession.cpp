#include "DeviceSimulator/device/BrowseSession.h"

#include <algorithm>
#include <array>

namespace DeviceSimulator {

namespace {

struct CategoryRow {
    std::uint32_t category;
    std::uint32_t behind;
};

constexpr std::array<CategoryRow, 6> kCategories{{{DEV_MGR_CATEGORY_PLAYLIST, DEV_MGR_CATEGORY_TRACK},
                                                  {DEV_MGR_CATEGORY_ARTIST, DEV_MGR_CATEGORY_ALBUM},
                                                  {DEV_MGR_CATEGORY_ALBUM, DEV_MGR_CATEGORY_TRACK},
                                                  {DEV_MGR_CATEGORY_GENRE, DEV_MGR_CATEGORY_ARTIST},
                                                  {DEV_MGR_CATEGORY_TRACK, 0},
                                                  {DEV_MGR_CATEGORY_COMPOSER, DEV_MGR_CATEGORY_ALBUM}}};

const CategoryRow* Find(std::uint32_t category) {
    const auto* found = std::find_if(kCategories.begin(), kCategories.end(),
                                     [&](const CategoryRow& row) { return row.category == category; });
    return found == kCategories.end() ? nullptr : found;
}

}  // namespace

DevMgrResult BrowseSession::Narrow(PathStep step) {
    const bool isTaken = std::any_of(m_path.begin(), m_path.end(),
                                     [&](const PathStep& taken) { return taken.category == step.category; });
    if (isTaken) {
        return DEV_MGR_INVALID_CATEGORY_SELECTION;
    }
    m_path.push_back(step);
    return DEV_MGR_SUCCESS;
}

DevMgrResult BrowseSession::Back() {
    if (m_path.empty()) {
        return DEV_MGR_ALREADY_ON_TOP_LEVEL;
    }
    m_path.pop_back();
    return DEV_MGR_SUCCESS;
}

DevMgrResult BrowseSession::ParentPath(std::int32_t parentCategory, std::uint32_t parentIndex,
                                       std::vector<PathStep>& path) const {
    path.clear();
    if (parentCategory == DEV_MGR_WHOLE_LIBRARY) {
        return DEV_MGR_SUCCESS;
    }
    if (parentCategory < 0 || !IsBrowsable(static_cast<std::uint32_t>(parentCategory))) {
        return DEV_MGR_INVALID_BASE_CATEGORY;
    }
    const PathStep step{static_cast<std::uint32_t>(parentCategory), parentIndex};
    const auto found = std::find(m_path.rbegin(), m_path.rend(), step);
    if (found == m_path.rend()) {
        path.push_back(step);
    } else {
        path.assign(m_path.begin(), found.base());
    }
    return DEV_MGR_SUCCESS;
}

bool IsBrowsable(std::uint32_t category) {
    return Find(category) != nullptr;
}

std::shared_ptr<const ItemList> ItemsBelow(const Library& library, const std::vector<PathStep>& path,
                                           std::uint32_t category) {
    static const auto* const kNone = new std::shared_ptr<const ItemList>(std::make_shared<ItemList>());
    if (!path.empty() && path.back().category == DEV_MGR_CATEGORY_TRACK) {
        return *kNone;
    }
    auto items = library.Items(path, category);
    return items == nullptr ? *kNone : items;
}

DevMgrResult CategoriesBehind(const Library& library, std::uint32_t category, std::uint32_t& mask) {
    if (category == DEV_MGR_CATEGORY_TOP_LEVEL) {
        mask = 0;
        for (const CategoryRow& row : kCategories) {
            if (!ItemsBelow(library, {}, row.category)->empty()) {
                mask |= row.category;
            }
        }
        return DEV_MGR_SUCCESS;
    }
    const CategoryRow* row = Find(category);
    if (row == nullptr) {
        return DEV_MGR_INVALID_CATEGORY_SELECTION;
    }
    mask = row->behind;
    return DEV_MGR_SUCCESS;
}

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
