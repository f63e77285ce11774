#include "DeviceSimulator/music/LibraryTables.h"

#include <algorithm>
#include <mutex>
#include <numeric>
#include <span>
#include <utility>

#include "DeviceSimulator/music/CoverDrawing.h"

namespace DeviceSimulator {

namespace {

// A walk to a track and back touches a handful of lists; 16 of 100,000 entries are 6.4 MB.
constexpr std::size_t kKeptLists = 16;
constexpr std::size_t kKeptCovers = 4;

// What a list may be of, and a path may choose from: beside the groups these.
constexpr std::size_t kPlaylists = kGroupKinds;
constexpr std::size_t kTracks = kGroupKinds + 1;
constexpr std::array<std::uint32_t, kGroupKinds + 2> kCategories{
    DEV_MGR_CATEGORY_ARTIST,   DEV_MGR_CATEGORY_ALBUM,    DEV_MGR_CATEGORY_GENRE,
    DEV_MGR_CATEGORY_COMPOSER, DEV_MGR_CATEGORY_PLAYLIST, DEV_MGR_CATEGORY_TRACK};

/// kCategories.size() for what is never in a list.
std::size_t KindOf(std::uint32_t category) {
    const auto found = std::find(kCategories.begin(), kCategories.end(), category);
    return static_cast<std::size_t>(found - kCategories.begin());
}

/// What a browse path comes down to, however long it is: at most one choice of each kind.
using Scope = std::array<std::uint32_t, kCategories.size()>;
constexpr Scope kEverything{kNone, kNone, kNone, kNone, kNone, kNone};

/// Whether a track is within the scope, but for the playlist.
bool Matches(const Scope& scope, std::uint32_t track, const TrackRow& row) {
    for (std::size_t kind = 0; kind < kGroupKinds; ++kind) {
        if (scope[kind] != kNone && scope[kind] != row.groups[kind]) {
            return false;
        }
    }
    return scope[kTracks] == kNone || scope[kTracks] == track;
}

/// The last few answers to a question that costs something. Any thread may ask. Two that ask for the same at
/// the same time may both make it.
template <typename Key, typename Value>
class LatestAnswers {
  public:
    explicit LatestAnswers(std::size_t capacity) : m_capacity(capacity) {}

    /// The value kept for `key`, else what `make()` returns, which is made without the lock held.
    template <typename Make>
    Value Get(const Key& key, const Make& make) {
        {
            const std::lock_guard lock(m_mutex);
            if (const auto found = Find(key); found != m_entries.end()) {
                std::rotate(m_entries.begin(), found, found + 1);
                return m_entries.front().second;
            }
        }
        Value value = make();
        const std::lock_guard lock(m_mutex);
        if (Find(key) == m_entries.end()) {
            if (m_entries.size() == m_capacity) {
                m_entries.pop_back();
            }
            m_entries.emplace(m_entries.begin(), key, value);
        }
        return value;
    }

  private:
    using Entries = std::vector<std::pair<Key, Value>>;  // latest first

    typename Entries::iterator Find(const Key& key) {
        return std::find_if(m_entries.begin(), m_entries.end(),
                            [&key](const auto& entry) { return entry.first == key; });
    }

    const std::size_t m_capacity;
    std::mutex m_mutex;
    Entries m_entries;  // under m_mutex
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

    TrackInfo Track(std::uint32_t track) const override {
        if (track >= m_tables.tracks.size()) {
            return {};
        }
        const TrackRow& row = m_tables.tracks[track];
        const auto group = [&](GroupKind kind) { return GroupName(kind, row.groups[kind]); };
        return {row.title,         group(kArtists), group(kAlbums), group(kGenres),
                group(kComposers), row.durationMs,  row.sampleRate, row.file};
    }

    std::shared_ptr<const ItemList> Items(const std::vector<PathStep>& path,
                                          std::uint32_t category) const override {
        Scope scope = kEverything;
        for (const PathStep& step : path) {
            const std::size_t kind = KindOf(step.category);
            const auto list = List(scope, kind);
            if (step.position >= list->size()) {
                return std::make_shared<const ItemList>();
            }
            scope[kind] = (*list)[step.position];
        }
        return List(scope, KindOf(category));
    }

    std::string_view ItemName(std::uint32_t category, std::uint32_t entry) const override {
        const std::size_t kind = KindOf(category);
        if (kind < kGroupKinds) {
            return GroupName(kind, entry);
        }
        if (kind == kTracks && entry < m_tables.tracks.size()) {
            return m_tables.tracks[entry].title;
        }
        if (kind == kPlaylists && entry < m_tables.playlists.size()) {
            return m_tables.playlists[entry].name;
        }
        return {};
    }

    std::shared_ptr<const Picture> Cover(std::uint32_t track) const override {
        if (track >= m_tables.tracks.size()) {
            return nullptr;
        }
        const std::uint32_t number = m_tables.tracks[track].groups[kAlbums];
        const GroupRow& album = m_tables.groups[kAlbums][number];
        if (m_tables.coverFolder == nullptr) {
            return m_covers.Get(number, [&] { return DrawCover(number, album.name, album.owner); });
        }
        return album.cover == kNoCover
                   ? nullptr
                   : m_covers.Get(album.cover, [&] { return m_tables.coverFolder->Read(album.cover); });
    }

  private:
    std::shared_ptr<const ItemList> List(const Scope& scope, std::size_t kind) const {
        return m_lists.Get({scope, kind},
                           [&] { return std::make_shared<const ItemList>(MakeList(scope, kind)); });
    }

    ItemList MakeList(const Scope& scope, std::size_t kind) const {
        if (kind < kGroupKinds) {
            return Groups(scope, kind);
        }
        if (kind == kTracks) {
            return Tracks(scope);
        }
        return kind == kPlaylists ? Playlists(scope) : ItemList{};
    }

    ItemList Tracks(const Scope& scope) const {
        if (scope == kEverything) {
            return AllBelow(m_tables.tracks.size());
        }
        // Of what was chosen, the first of these gives its order to the list, the others only thin it out.
        std::span<const std::uint32_t> candidates;
        if (scope[kPlaylists] != kNone) {
            candidates = m_tables.playlists[scope[kPlaylists]].tracks;
        } else if (scope[kTracks] != kNone) {
            candidates = std::span(&scope[kTracks], 1);
        } else {
            for (const GroupKind kind : {kAlbums, kArtists, kComposers, kGenres}) {
                if (scope[kind] != kNone) {
                    candidates = m_tables.groups[kind][scope[kind]].tracks;
                    break;
                }
            }
        }
        ItemList tracks;
        std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(tracks),
                     [&](std::uint32_t track) { return Matches(scope, track, m_tables.tracks[track]); });
        return tracks;
    }

    ItemList Groups(const Scope& scope, std::size_t kind) const {
        if (scope == kEverything) {
            return AllBelow(m_tables.groups[kind].size());
        }
        const auto tracks = List(scope, kTracks);
        ItemList groups;
        for (const std::uint32_t track : *tracks) {
            if (const std::uint32_t group = m_tables.tracks[track].groups[kind]; group != kNone) {
                groups.push_back(group);
            }
        }
        std::sort(groups.begin(), groups.end());
        groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
        return groups;
    }

    /// The playlists that hold at least one of the tracks.
    ItemList Playlists(const Scope& scope) const {
        ItemList playlists = AllBelow(m_tables.playlists.size());
        if (scope == kEverything) {
            return playlists;
        }
        std::erase_if(playlists, [&](std::uint32_t playlist) {
            const ItemList& tracks = m_tables.playlists[playlist].tracks;
            return (scope[kPlaylists] != kNone && scope[kPlaylists] != playlist) ||
                   std::none_of(tracks.begin(), tracks.end(), [&](std::uint32_t track) {
                       return Matches(scope, track, m_tables.tracks[track]);
                   });
        });
        return playlists;
    }

    std::string_view GroupName(std::size_t kind, std::uint32_t group) const {
        const auto& rows = m_tables.groups[kind];
        return group < rows.size() ? rows[group].name : std::string_view{};
    }

    const LibraryTables m_tables;
    mutable LatestAnswers<std::pair<Scope, std::size_t>, std::shared_ptr<const ItemList>> m_lists{kKeptLists};
    /// By the folder's number, or by album where they are drawn.
    mutable LatestAnswers<std::uint32_t, std::shared_ptr<const Picture>> m_covers{kKeptCovers};
};

}  // namespace

std::unique_ptr<Library> MakeTableLibrary(LibraryTables tables) {
    return std::make_unique<TableLibrary>(std::move(tables));
}

}  // namespace DeviceSimulator
