// A music library small enough to reckon with by hand.
#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "DeviceSimulator/Library.h"

namespace DeviceSimulator::Test {

/// Track t is "Title t", 10 s long; three tracks an album, two albums an artist, two artists a genre; odd
/// albums run at 48000 Hz. No composers; one playlist, the tracks backwards. Album 0 has no cover.
class FakeLibrary : public Library {
  public:
    static constexpr std::uint32_t kTrackMs = 10'000;

    explicit FakeLibrary(std::uint32_t tracks) {
        for (std::uint32_t t = 0; t < tracks; ++t) {
            m_titles.push_back("Title " + std::to_string(t));
            m_albums.push_back("Album " + std::to_string(t / 3));
            m_artists.push_back("Artist " + std::to_string(t / 6));
            m_genres.push_back("Genre " + std::to_string(t / 12));
        }
    }

    std::size_t TrackCount() const override { return m_titles.size(); }

    TrackInfo Track(std::uint32_t track) const override {
        const std::uint32_t rate = track / 3 % 2 == 1 ? 48000 : 44100;
        return {m_titles[track], m_artists[track], m_albums[track], m_genres[track], {}, kTrackMs, rate, {}};
    }

    std::shared_ptr<const ItemList> Items(const std::vector<PathStep>& path,
                                          std::uint32_t category) const override {
        ItemList tracks(TrackCount());
        for (std::uint32_t t = 0; t < tracks.size(); ++t) {
            tracks[t] = t;
        }
        for (const PathStep& step : path) {
            const ItemList groups = Group(tracks, step.category);
            if (step.position >= groups.size()) {
                return std::make_shared<ItemList>();
            }
            std::erase_if(tracks, [&](auto t) { return Key(t, step.category) != groups[step.position]; });
            if (step.category == kPlaylist) {
                std::reverse(tracks.begin(), tracks.end());
            }
        }
        return std::make_shared<ItemList>(category == kTrack ? tracks : Group(tracks, category));
    }

    std::string_view ItemName(std::uint32_t category, std::uint32_t entry) const override {
        switch (category) {
            case kTrack:
                return m_titles[entry];
            case kAlbum:
                return m_albums[entry * 3];
            case kArtist:
                return m_artists[entry * 6];
            case kGenre:
                return m_genres[entry * 12];
            default:
                return "Backwards";
        }
    }

    std::shared_ptr<const Picture> Cover(std::uint32_t track) const override {
        const auto album = static_cast<std::uint8_t>(track / 3);
        return album == 0 ? nullptr
                          : std::make_shared<Picture>(Picture{{0xFF, 0xD8, album}, 2, kCoverHeight});
    }

    static constexpr std::uint32_t kCoverHeight = 3;

  private:
    static std::uint32_t Key(std::uint32_t track, std::uint32_t category) {
        switch (category) {
            case kAlbum:
                return track / 3;
            case kArtist:
                return track / 6;
            case kGenre:
                return track / 12;
            default:
                return 0;
        }
    }

    static ItemList Group(const ItemList& tracks, std::uint32_t category) {
        ItemList groups;
        if (category == kComposer) {
            return groups;
        }
        for (const std::uint32_t track : tracks) {
            groups.push_back(Key(track, category));
        }
        std::sort(groups.begin(), groups.end());
        groups.erase(std::unique(groups.begin(), groups.end()), groups.end());
        return groups;
    }

    std::vector<std::string> m_titles;
    std::vector<std::string> m_albums;
    std::vector<std::string> m_artists;
    std::vector<std::string> m_genres;
};

}  // namespace DeviceSimulator::Test
