#include "DeviceSimulator/music/LibraryTables.h"

#include <algorithm>
#include <numeric>
#include <optional>

#include "DeviceSimulator/music/CoverDrawing.h"
#include "DeviceSimulator/music/LibraryCache.h"

namespace DeviceSimulator {

namespace {

// A walk to a track and back touches a handful of lists; 16 of 100,000 entries are 6.4 MB.
constexpr std::size_t kKeptLists = 16;
constexpr std::size_t kKeptCovers = 4;

std::optional<GroupKind> KindOf(std::uint32_t category) {
    switch (category) {
        case DEV_MGR_CATEGORY_ARTIST:
            return kArtists;
        case DEV_MGR_CATEGORY_ALBUM:
            return kAlbums;
        case DEV_MGR_CATEGORY_GENRE:
            return kGenres;
        case DEV_MGR_CATEGORY_COMPOSER:
            return kComposers;
        default:
            return std::nullopt;
    }
}

/// What a browse path comes down to, however long it is: at most one choice of each sort.
struct Scope {
    std::array<std::uint32_t, kGroupKinds> groups{kNone, kNone, kNone, kNone};
    std::uint32_t playlist = kNone;
    std::uint32_t track = kNone;
    bool operator==(const Scope&) const = default;

    bool Matches(std::uint32_t number, const TrackRow& row) const {
        for (std::size_t kind = 0; kind < kGroupKinds; ++kind) {
            if (groups[kind] != kNone && groups[kind] != row.groups[kind]) {
                return false;
            }
        }
        return track == kNone || track == number;
    }

    /// False when nothing can be chosen in `category`.
    bool Choose(std::uint32_t category, std::uint32_t entry) {
        if (const auto kind = KindOf(category)) {
            groups[*kind] = entry;
        } else if (category == DEV_MGR_CATEGORY_PLAYLIST) {
            playlist = entry;
        } else if (category == DEV_MGR_CATEGORY_TRACK) {
            track = entry;
        } else {
            return false;
        }
        return true;
    }
};

struct ListKey {
    Scope scope;
    std::uint32_t category = 0;
    bool operator==(const ListKey&) const = default;
};

ItemList AllBelow(std::size_t count) {
    ItemList list(count);
    std::iota(list.begin(), list.end(), 0U);
    return list;
}

class TableLibrary final : public Library {
  public:
    explicit TableLibrary(LibraryTables tables) : m_tables(std::move(tables)) {}

    std::size_t TrackCount() const override { return m_tables.tracks.size(); }
    TrackInfo Track(std::uint32_t track) const override;
    std::shared_ptr<const ItemList> Items(const std::vector<PathStep>& path,
                                          std::uint32_t category) const override;
    std::string_view ItemName(std::uint32_t category, std::uint32_t entry) const override;
    std::shared_ptr<const Picture> Cover(std::uint32_t track) const override;

  private:
    std::shared_ptr<const ItemList> List(const Scope& scope, std::uint32_t category) const;
    ItemList MakeList(const Scope& scope, std::uint32_t category) const;
    ItemList Tracks(const Scope& scope) const;
    ItemList Groups(const Scope& scope, GroupKind kind) const;
    ItemList Playlists(const Scope& scope) const;
    std::string_view GroupName(GroupKind kind, std::uint32_t group) const;

    const LibraryTables m_tables;
    mutable LibraryCache<ListKey, std::shared_ptr<const ItemList>> m_lists{kKeptLists};
    /// By the folder's number, or by album where they are drawn.
    mutable LibraryCache<std::uint32_t, std::shared_ptr<const Picture>> m_covers{kKeptCovers};
};

TrackInfo TableLibrary::Track(std::uint32_t track) const {
    if (track >= m_tables.tracks.size()) {
        return {};
    }
    const TrackRow& row = m_tables.tracks[track];
    TrackInfo info;
    info.title = row.title;
    info.artist = GroupName(kArtists, row.groups[kArtists]);
    info.album = GroupName(kAlbums, row.groups[kAlbums]);
    info.genre = GroupName(kGenres, row.groups[kGenres]);
    info.composer = GroupName(kComposers, row.groups[kComposers]);
    info.durationMs = row.durationMs;
    info.sampleRate = row.sampleRate;
    info.file = row.file;
    return info;
}

std::shared_ptr<const ItemList> TableLibrary::Items(const std::vector<PathStep>& path,
                                                    std::uint32_t category) const {
    Scope scope;
    for (const PathStep& step : path) {
        const auto list = List(scope, step.category);
        if (step.position >= list->size() || !scope.Choose(step.category, (*list)[step.position])) {
            return std::make_shared<const ItemList>();
        }
    }
    return List(scope, category);
}

std::string_view TableLibrary::ItemName(std::uint32_t category, std::uint32_t entry) const {
    if (const auto kind = KindOf(category)) {
        return GroupName(*kind, entry);
    }
    if (category == DEV_MGR_CATEGORY_TRACK && entry < m_tables.tracks.size()) {
        return m_tables.tracks[entry].title;
    }
    if (category == DEV_MGR_CATEGORY_PLAYLIST && entry < m_tables.playlists.size()) {
        return m_tables.playlists[entry].name;
    }
    return {};
}

std::shared_ptr<const Picture> TableLibrary::Cover(std::uint32_t track) const {
    if (track >= m_tables.tracks.size()) {
        return nullptr;
    }
    const std::uint32_t album = m_tables.tracks[track].groups[kAlbums];
    if (m_tables.coverFolder != nullptr) {
        const std::uint32_t cover = m_tables.covers[album];
        return cover == kNoCover ? nullptr
                                 : m_covers.Get(cover, [&] { return m_tables.coverFolder->Read(cover); });
    }
    return m_covers.Get(
        album, [&] { return DrawCover(album, GroupName(kAlbums, album), m_tables.albumOwners[album]); });
}

std::shared_ptr<const ItemList> TableLibrary::List(const Scope& scope, std::uint32_t category) const {
    return m_lists.Get({scope, category},
                       [&] { return std::make_shared<const ItemList>(MakeList(scope, category)); });
}

ItemList TableLibrary::MakeList(const Scope& scope, std::uint32_t category) const {
    if (const auto kind = KindOf(category)) {
        return Groups(scope, *kind);
    }
    if (category == DEV_MGR_CATEGORY_TRACK) {
        return Tracks(scope);
    }
    return category == DEV_MGR_CATEGORY_PLAYLIST ? Playlists(scope) : ItemList{};
}

ItemList TableLibrary::Tracks(const Scope& scope) const {
    if (scope == Scope{}) {
        return AllBelow(m_tables.tracks.size());
    }
    // Of what was chosen, the first of these gives its order to the list, the others only thin it out.
    std::span<const std::uint32_t> candidates;
    if (scope.playlist != kNone) {
        candidates = m_tables.playlists[scope.playlist].tracks;
    } else if (scope.track != kNone) {
        candidates = std::span(&scope.track, 1);
    } else {
        for (const GroupKind kind : {kAlbums, kArtists, kComposers, kGenres}) {
            if (scope.groups[kind] != kNone) {
                candidates = m_tables.groups[kind].TracksOf(scope.groups[kind]);
                break;
            }
        }
    }
    ItemList tracks;
    std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(tracks),
                 [&](std::uint32_t track) { return scope.Matches(track, m_tables.tracks[track]); });
    return tracks;
}

ItemList TableLibrary::Groups(const Scope& scope, GroupKind kind) const {
    if (scope == Scope{}) {
        return AllBelow(m_tables.groups[kind].names.size());
    }
    ItemList groups;
    for (const std::uint32_t track : *List(scope, DEV_MGR_CATEGORY_TRACK)) {
        if (const std::uint32_t group = m_tables.tracks[track].groups[kind]; group != kNone) {
            groups.push_back(group);
        }
    }
    std::sort(groups.begin(), groups.end());
    groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
    return groups;
}

/// The playlists that hold at least one of the tracks.
ItemList TableLibrary::Playlists(const Scope& scope) const {
    ItemList playlists = AllBelow(m_tables.playlists.size());
    if (scope == Scope{}) {
        return playlists;
    }
    std::erase_if(playlists, [&](std::uint32_t playlist) {
        if (scope.playlist != kNone && scope.playlist != playlist) {
            return true;
        }
        const ItemList& tracks = m_tables.playlists[playlist].tracks;
        return std::none_of(tracks.begin(), tracks.end(), [&](std::uint32_t track) {
            return scope.Matches(track, m_tables.tracks[track]);
        });
    });
    return playlists;
}

std::string_view TableLibrary::GroupName(GroupKind kind, std::uint32_t group) const {
    const auto& names = m_tables.groups[kind].names;
    return group < names.size() ? names[group] : std::string_view{};
}

}  // namespace

std::unique_ptr<Library> MakeTableLibrary(LibraryTables tables) {
    return std::make_unique<TableLibrary>(std::move(tables));
}

}  // namespace DeviceSimulator
