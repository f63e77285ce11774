// Makes a library of tracks as they come: groups them, sorts them, numbers them.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/music/LibraryTables.h"

namespace DeviceSimulator {

/// One thread builds; Build() ends it.
class LibraryBuilder {
  public:
    explicit LibraryBuilder(const Sorting& sorting = {}) : m_order(sorting) {}

    /// Tracks without an artist or album are filed as unknown. Albums of one title are one when they have
    /// the same album artist (or are compilations, or without either have the same artist).
    /// `file` is any bytes, empty for none. The texts of `tags` are well-formed UTF-8 (see CleanName).
    /// `cover`, a number of the folder that Build is given, is the album's unless that has one already.
    /// Returns the track's number, which counts only for the builder.
    std::uint32_t Add(const TrackTags& tags, std::string_view file = {}, std::uint32_t cover = kNoCover);

    /// Playlists keep the order in which they are added, and their tracks that of `tracks` (from Add).
    void AddPlaylist(std::string_view name, std::vector<std::uint32_t> tracks);

    std::size_t TrackCount() const { return m_tracks.size(); }

    /// With the covers of `folder`; without one they are drawn at run time.
    std::unique_ptr<Library> Build(std::shared_ptr<const CoverFolder> folder = nullptr);

  private:
    struct AddedTrack {
        TrackRow row;
        std::uint32_t disc = 0;
        std::uint32_t track = 0;
    };
    struct Groups {
        std::vector<GroupRow> rows;
        std::unordered_map<std::string_view, std::uint32_t> numbers;
    };

    std::uint32_t GroupNumber(GroupKind kind, std::string_view name, std::string_view owner = {});
    void NumberGroups(GroupKind kind);
    std::vector<std::uint32_t> NumberTracks();
    std::vector<std::uint32_t> AlbumOrder() const;
    void ListTrack(std::uint32_t track, std::initializer_list<GroupKind> kinds);

    const NameOrder m_order;
    LibraryTables m_tables;
    std::vector<AddedTrack> m_tracks;
    std::array<Groups, kGroupKinds> m_groups;
};

}  // namespace DeviceSimulator
