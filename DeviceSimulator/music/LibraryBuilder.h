// Makes a library of tracks as they come: groups them, sorts them, numbers them.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/music/LibraryTables.h"

namespace DeviceSimulator {

/// One thread builds; Build() ends it.
class LibraryBuilder {
  public:
    explicit LibraryBuilder(Sorting sorting = Sorting::WithoutArticle) : m_sorting(sorting) {}

    /// Where a track went, by numbers that count only for the builder.
    struct Added {
        std::uint32_t track = 0;
        std::uint32_t album = 0;
    };

    /// Tracks without an artist or album are filed as unknown. Albums of one title are one when they have
    /// the same album artist (or are compilations, or without either have the same artist).
    /// `file` is any bytes, empty for none. The texts of `tags` are well-formed UTF-8 (see CleanName).
    Added Add(const TrackTags& tags, std::string_view file = {});

    /// Playlists keep the order in which they are added, and their tracks that of `tracks` (from Added).
    void AddPlaylist(std::string_view name, std::vector<std::uint32_t> tracks);

    bool HasCover(std::uint32_t album) const;
    /// `cover` is a number of the folder that BuildWithCovers is given.
    void SetCover(std::uint32_t album, std::uint32_t cover);

    std::size_t TrackCount() const { return m_tracks.size(); }

    /// With covers drawn at run time.
    std::unique_ptr<Library> BuildWithDrawnCovers() { return Build(nullptr); }
    /// With the covers that were set.
    std::unique_ptr<Library> BuildWithCovers(std::shared_ptr<const CoverFolder> folder) {
        return Build(std::move(folder));
    }

  private:
    struct AddedTrack {
        TrackRow row;
        std::uint32_t disc = 0;
        std::uint32_t track = 0;
    };
    struct Groups {
        std::vector<std::string_view> names;
        std::vector<std::string_view> owners;  // albums only; else empty texts
        std::unordered_map<std::string_view, std::uint32_t> numbers;
    };

    std::uint32_t GroupNumber(GroupKind kind, std::string_view name, std::string_view owner = {});
    std::unique_ptr<Library> Build(std::shared_ptr<const CoverFolder> covers);
    void NumberGroups(GroupKind kind);
    std::vector<std::uint32_t> NumberTracks();
    std::vector<std::uint32_t> AlbumOrder() const;
    void ListTracks(GroupKind kind, const std::vector<std::uint32_t>& order);

    const Sorting m_sorting;
    LibraryTables m_tables;
    std::vector<AddedTrack> m_tracks;
    std::array<Groups, kGroupKinds> m_groups;
    std::vector<std::uint32_t> m_covers;  // by album; may be shorter
};

}  // namespace DeviceSimulator
