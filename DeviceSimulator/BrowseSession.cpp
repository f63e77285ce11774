#include "DeviceSimulator/BrowseSession.h"

#include <algorithm>
#include <array>

namespace DeviceSimulator {

namespace {

struct CategoryRow {
    std::uint32_t category;
    std::uint32_t behind;
};

constexpr std::array<CategoryRow, 6> kCategories{{{kPlaylist, kTrack},
                                                  {kArtist, kAlbum},
                                                  {kAlbum, kTrack},
                                                  {kGenre, kArtist},
                                                  {kTrack, 0},
                                                  {kComposer, kAlbum}}};

const CategoryRow* Find(std::uint32_t category) {
    const auto* found = std::find_if(kCategories.begin(), kCategories.end(),
                                     [&](const CategoryRow& row) { return row.category == category; });
    return found == kCategories.end() ? nullptr : found;
}

}  // namespace

Result BrowseSession::Narrow(PathStep step) {
    const bool isTaken = std::any_of(m_path.begin(), m_path.end(),
                                     [&](const PathStep& taken) { return taken.category == step.category; });
    if (isTaken) {
        return kInvalidCategory;
    }
    m_path.push_back(step);
    return kSuccess;
}

Result BrowseSession::Back() {
    if (m_path.empty()) {
        return kAlreadyOnTopLevel;
    }
    m_path.pop_back();
    return kSuccess;
}

Result BrowseSession::ParentPath(std::int32_t parentCategory, std::uint32_t parentIndex,
                                 std::vector<PathStep>& path) const {
    path.clear();
    if (parentCategory == -1) {
        return kSuccess;
    }
    if (parentCategory < 0 || !IsBrowsable(static_cast<std::uint32_t>(parentCategory))) {
        return kInvalidBaseCategory;
    }
    const PathStep step{static_cast<std::uint32_t>(parentCategory), parentIndex};
    const auto found = std::find(m_path.rbegin(), m_path.rend(), step);
    if (found == m_path.rend()) {
        path.push_back(step);
    } else {
        path.assign(m_path.begin(), found.base());
    }
    return kSuccess;
}

bool IsBrowsable(std::uint32_t category) {
    return Find(category) != nullptr;
}

std::shared_ptr<const ItemList> ItemsBelow(const Library& library, const std::vector<PathStep>& path,
                                           std::uint32_t category) {
    static const auto* const kNone = new std::shared_ptr<const ItemList>(std::make_shared<ItemList>());
    if (!path.empty() && path.back().category == kTrack) {
        return *kNone;
    }
    auto items = library.Items(path, category);
    return items == nullptr ? *kNone : items;
}

Result CategoriesBehind(const Library& library, std::uint32_t category, std::uint32_t& mask) {
    if (category == kTopLevel) {
        mask = 0;
        for (const CategoryRow& row : kCategories) {
            if (!ItemsBelow(library, {}, row.category)->empty()) {
                mask |= row.category;
            }
        }
        return kSuccess;
    }
    const CategoryRow* row = Find(category);
    if (row == nullptr) {
        return kInvalidCategory;
    }
    mask = row->behind;
    return kSuccess;
}

}  // namespace DeviceSimulator
