#include "DeviceSimulator/music/LibraryBuilder.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace DeviceSimulator {

namespace {

// Of the player's USB audio.
constexpr std::uint32_t kLowestSentRate = 8000;
constexpr std::uint32_t kHighestSentRate = 48000;

/// The rate at which a file of `rate` Hz is sent: what is above the highest is halved until it is not, so
/// that it stays in its family (88,200 Hz goes out as 44,100).
constexpr std::uint32_t SentSampleRate(std::uint32_t rate) {
    while (rate > kHighestSentRate) {
        rate /= 2;
    }
    return std::max(rate, kLowestSentRate);
}

static_assert(SentSampleRate(192000) == 48000 && SentSampleRate(88200) == 44100);
static_assert(SentSampleRate(22050) == 22050 && SentSampleRate(1) == 8000);

constexpr std::string_view kUnknownArtist = "Unknown Artist";
constexpr std::string_view kUnknownAlbum = "Unknown Album";
constexpr std::string_view kVariousArtists = "Various Artists";

std::string_view Or(std::string_view name, std::string_view fallback) {
    return name.empty() ? fallback : name;
}

/// The numbers below `count` in the order of their keys; those of equal keys stay in theirs.
template <typename KeyOf>
std::vector<std::uint32_t> SortedNumbers(std::size_t count, const KeyOf& keyOf) {
    std::vector<std::pair<std::string, std::uint32_t>> keys;
    keys.reserve(count);
    for (std::uint32_t i = 0; i < count; ++i) {
        keys.emplace_back(keyOf(i), i);
    }
    std::sort(keys.begin(), keys.end());
    std::vector<std::uint32_t> numbers(count);
    std::transform(keys.begin(), keys.end(), numbers.begin(), [](const auto& key) { return key.second; });
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
    key += '\0';
    key += owner;
    if (const auto found = groups.numbers.find(key); found != groups.numbers.end()) {
        return found->second;
    }
    const auto number = static_cast<std::uint32_t>(groups.rows.size());
    const std::string_view kept = m_tables.texts.Keep(key);
    groups.numbers.emplace(kept, number);
    groups.rows.push_back({kept.substr(0, name.size()), kept.substr(name.size() + 1), kNoCover, {}});
    return number;
}

std::uint32_t LibraryBuilder::Add(const TrackTags& tags, std::string_view file, std::uint32_t cover) {
    const std::string_view artist = Or(tags.artist, kUnknownArtist);
    const std::string_view owner = Or(tags.albumArtist, tags.compilation != 0 ? kVariousArtists : artist);
    AddedTrack added;
    added.row.title = m_tables.texts.Keep(tags.title);
    added.row.file = m_tables.texts.Keep(file);
    added.row.durationMs = tags.durationMs;
    added.row.sampleRate = SentSampleRate(tags.sampleRate);
    const std::uint32_t album = GroupNumber(kAlbums, Or(tags.album, kUnknownAlbum), owner);
    added.row.groups[kArtists] = GroupNumber(kArtists, artist);
    added.row.groups[kAlbums] = album;
    added.row.groups[kGenres] = tags.genre.empty() ? kNone : GroupNumber(kGenres, tags.genre);
    added.row.groups[kComposers] = tags.composer.empty() ? kNone : GroupNumber(kComposers, tags.composer);
    added.disc = tags.disc;
    added.track = tags.track;
    m_tracks.push_back(added);
    if (std::uint32_t& kept = m_groups[kAlbums].rows[album].cover; kept == kNoCover) {
        kept = cover;
    }
    return static_cast<std::uint32_t>(m_tracks.size() - 1);
}

void LibraryBuilder::AddPlaylist(std::string_view name, std::vector<std::uint32_t> tracks) {
    m_tables.playlists.push_back({m_tables.texts.Keep(name), std::move(tracks)});
}

void LibraryBuilder::NumberGroups(GroupKind kind) {
    const auto& rows = m_groups[kind].rows;
    const auto order = SortedNumbers(rows.size(), [&](std::uint32_t group) {
        return m_order.Key(rows[group].name) + '\0' + m_order.Key(rows[group].owner);
    });
    const auto numbers = NewNumbers(order);
    for (AddedTrack& track : m_tracks) {
        if (std::uint32_t& group = track.row.groups[kind]; group != kNone) {
            group = numbers[group];
        }
    }
    for (const std::uint32_t group : order) {
        m_tables.groups[kind].push_back(rows[group]);
    }
}

/// Returns the tracks' final numbers, by the order in which they were added.
std::vector<std::uint32_t> LibraryBuilder::NumberTracks() {
    const auto order = SortedNumbers(
        m_tracks.size(), [this](std::uint32_t track) { return m_order.Key(m_tracks[track].row.title); });
    m_tables.tracks.reserve(order.size());
    for (const std::uint32_t track : order) {
        m_tables.tracks.push_back(m_tracks[track].row);
    }
    auto numbers = NewNumbers(order);
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

/// Adds the track of that final number to its groups of `kinds`.
void LibraryBuilder::ListTrack(std::uint32_t track, std::initializer_list<GroupKind> kinds) {
    for (const GroupKind kind : kinds) {
        if (const std::uint32_t group = m_tables.tracks[track].groups[kind]; group != kNone) {
            m_tables.groups[kind][group].tracks.push_back(track);
        }
    }
}

std::unique_ptr<Library> LibraryBuilder::Build(std::shared_ptr<const CoverFolder> folder) {
    for (const GroupKind kind : {kArtists, kAlbums, kGenres, kComposers}) {
        NumberGroups(kind);
    }
    m_tables.coverFolder = std::move(folder);
    const auto numbers = NumberTracks();
    for (const std::uint32_t track : AlbumOrder()) {
        ListTrack(numbers[track], {kArtists, kAlbums});
    }
    for (std::uint32_t track = 0; track < m_tables.tracks.size(); ++track) {
        ListTrack(track, {kGenres, kComposers});
    }
    return MakeTableLibrary(std::move(m_tables));
}

}  // namespace DeviceSimulator
