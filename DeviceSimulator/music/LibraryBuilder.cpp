#include "DeviceSimulator/music/LibraryBuilder.h"

#include <algorithm>
#include <numeric>
#include <tuple>

#include "DeviceSimulator/music/SentSampleRate.h"

namespace DeviceSimulator {

namespace {

constexpr std::string_view kUnknownArtist = "Unknown Artist";
constexpr std::string_view kUnknownAlbum = "Unknown Album";
constexpr std::string_view kVariousArtists = "Various Artists";

std::string_view Or(std::string_view name, std::string_view fallback) {
    return name.empty() ? fallback : name;
}

/// Most comparisons are settled by the first eight bytes, without a look at the text.
struct SortEntry {
    std::uint64_t prefix = 0;
    std::uint32_t number = 0;
};

std::uint64_t Prefix(const std::string& key) {
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < sizeof prefix; ++i) {
        prefix = prefix << 8 | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    }
    return prefix;
}

/// The numbers of `keys` in the order of the keys; equal ones stay in theirs.
std::vector<std::uint32_t> SortedNumbers(const std::vector<std::string>& keys) {
    std::vector<SortEntry> entries(keys.size());
    for (std::uint32_t i = 0; i < entries.size(); ++i) {
        entries[i] = {Prefix(keys[i]), i};
    }
    std::sort(entries.begin(), entries.end(), [&keys](const SortEntry& a, const SortEntry& b) {
        if (a.prefix != b.prefix) {
            return a.prefix < b.prefix;
        }
        const int order = keys[a.number].compare(keys[b.number]);
        return order != 0 ? order < 0 : a.number < b.number;
    });
    std::vector<std::uint32_t> numbers;
    numbers.reserve(entries.size());
    for (const SortEntry& entry : entries) {
        numbers.push_back(entry.number);
    }
    return numbers;
}

/// old number -> new number, of a list of old numbers in their new order.
std::vector<std::uint32_t> NewNumbers(const std::vector<std::uint32_t>& order) {
    std::vector<std::uint32_t> numbers(order.size());
    for (std::uint32_t i = 0; i < order.size(); ++i) {
        numbers[order[i]] = i;
    }
    return numbers;
}

/// What is not numbered stands behind what is.
std::uint32_t OrLast(std::uint32_t number) {
    return number == 0 ? UINT32_MAX : number;
}

}  // namespace

std::uint32_t LibraryBuilder::GroupNumber(GroupKind kind, std::string_view name, std::string_view owner) {
    Groups& groups = m_groups[kind];
    std::string key(name);
    if (kind == kAlbums) {
        key += '\0';
        key += owner;
    }
    if (const auto found = groups.numbers.find(key); found != groups.numbers.end()) {
        return found->second;
    }
    const auto number = static_cast<std::uint32_t>(groups.names.size());
    const std::string_view kept = m_tables.texts.Keep(key);
    groups.numbers.emplace(kept, number);
    groups.names.push_back(kept.substr(0, name.size()));
    groups.owners.push_back(kind == kAlbums ? kept.substr(name.size() + 1) : std::string_view{});
    return number;
}

LibraryBuilder::Added LibraryBuilder::Add(const TrackTags& tags, std::string_view file) {
    const std::string_view artist = Or(tags.artist, kUnknownArtist);
    const std::string_view owner = Or(tags.albumArtist, tags.compilation != 0 ? kVariousArtists : artist);
    AddedTrack added;
    added.row.title = m_tables.texts.Keep(tags.title);
    added.row.file = m_tables.texts.Keep(file);
    added.row.durationMs = tags.durationMs;
    added.row.sampleRate = SentSampleRate(tags.sampleRate);
    added.row.groups[kArtists] = GroupNumber(kArtists, artist);
    added.row.groups[kAlbums] = GroupNumber(kAlbums, Or(tags.album, kUnknownAlbum), owner);
    added.row.groups[kGenres] = tags.genre.empty() ? kNone : GroupNumber(kGenres, tags.genre);
    added.row.groups[kComposers] = tags.composer.empty() ? kNone : GroupNumber(kComposers, tags.composer);
    added.disc = tags.disc;
    added.track = tags.track;
    m_tracks.push_back(added);
    return {static_cast<std::uint32_t>(m_tracks.size() - 1), added.row.groups[kAlbums]};
}

void LibraryBuilder::AddPlaylist(std::string_view name, std::vector<std::uint32_t> tracks) {
    m_tables.playlists.push_back({m_tables.texts.Keep(name), std::move(tracks)});
}

bool LibraryBuilder::HasCover(std::uint32_t album) const {
    return album < m_covers.size() && m_covers[album] != kNoCover;
}

void LibraryBuilder::SetCover(std::uint32_t album, std::uint32_t cover) {
    if (album >= m_covers.size()) {
        m_covers.resize(album + 1, kNoCover);
    }
    m_covers[album] = cover;
}

void LibraryBuilder::NumberGroups(GroupKind kind) {
    const Groups& groups = m_groups[kind];
    std::vector<std::string> keys;
    keys.reserve(groups.names.size());
    for (std::size_t i = 0; i < groups.names.size(); ++i) {
        keys.push_back(SortKey(groups.names[i], m_sorting) + '\0' + SortKey(groups.owners[i], m_sorting));
    }
    const auto order = SortedNumbers(keys);
    const auto numbers = NewNumbers(order);
    for (AddedTrack& track : m_tracks) {
        if (std::uint32_t& group = track.row.groups[kind]; group != kNone) {
            group = numbers[group];
        }
    }
    for (const std::uint32_t group : order) {
        m_tables.groups[kind].names.push_back(groups.names[group]);
    }
    if (kind == kAlbums) {
        m_covers.resize(order.size(), kNoCover);
        for (const std::uint32_t album : order) {
            m_tables.albumOwners.push_back(groups.owners[album]);
            m_tables.covers.push_back(m_covers[album]);
        }
    }
}

/// Returns the tracks' final numbers, by the order in which they were added.
std::vector<std::uint32_t> LibraryBuilder::NumberTracks() {
    std::vector<std::string> keys;
    keys.reserve(m_tracks.size());
    for (const AddedTrack& track : m_tracks) {
        keys.push_back(SortKey(track.row.title, m_sorting));
    }
    const auto order = SortedNumbers(keys);
    auto numbers = NewNumbers(order);
    m_tables.tracks.reserve(order.size());
    for (const std::uint32_t track : order) {
        m_tables.tracks.push_back(m_tracks[track].row);
    }
    for (PlaylistRow& playlist : m_tables.playlists) {
        for (std::uint32_t& track : playlist.tracks) {
            track = numbers[track];
        }
    }
    return numbers;
}

/// The tracks as added, by album, disc and track number, then in their order.
std::vector<std::uint32_t> LibraryBuilder::AlbumOrder() const {
    std::vector<std::uint32_t> order(m_tracks.size());
    std::iota(order.begin(), order.end(), 0U);
    std::stable_sort(order.begin(), order.end(), [this](std::uint32_t a, std::uint32_t b) {
        const auto key = [](const AddedTrack& track) {
            // An album of one disc often does not say so.
            return std::tuple(track.row.groups[kAlbums], std::max(track.disc, 1U), OrLast(track.track));
        };
        return key(m_tracks[a]) < key(m_tracks[b]);
    });
    return order;
}

/// Fills the tracks of each group of `kind`, in the order of `order` (final numbers).
void LibraryBuilder::ListTracks(GroupKind kind, const std::vector<std::uint32_t>& order) {
    GroupTable& table = m_tables.groups[kind];
    table.starts.assign(table.names.size() + 1, 0);
    for (const TrackRow& row : m_tables.tracks) {
        if (row.groups[kind] != kNone) {
            ++table.starts[row.groups[kind] + 1];
        }
    }
    std::partial_sum(table.starts.begin(), table.starts.end(), table.starts.begin());
    table.tracks.resize(table.starts.back());
    auto next = table.starts;
    for (const std::uint32_t track : order) {
        if (const std::uint32_t group = m_tables.tracks[track].groups[kind]; group != kNone) {
            table.tracks[next[group]++] = track;
        }
    }
}

std::unique_ptr<Library> LibraryBuilder::Build(std::shared_ptr<const CoverFolder> covers) {
    for (const GroupKind kind : {kArtists, kAlbums, kGenres, kComposers}) {
        NumberGroups(kind);
    }
    m_tables.coverFolder = std::move(covers);
    const auto numbers = NumberTracks();
    auto byAlbum = AlbumOrder();
    std::transform(byAlbum.begin(), byAlbum.end(), byAlbum.begin(),
                   [&numbers](std::uint32_t track) { return numbers[track]; });
    std::vector<std::uint32_t> byTitle(m_tracks.size());
    std::iota(byTitle.begin(), byTitle.end(), 0U);
    ListTracks(kArtists, byAlbum);
    ListTracks(kAlbums, byAlbum);
    ListTracks(kGenres, byTitle);
    ListTracks(kComposers, byTitle);
    return MakeTableLibrary(std::move(m_tables));
}

}  // namespace DeviceSimulator
