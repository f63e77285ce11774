// The now-playing list: the tracks that were chosen, in the order in which they are played.
#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "DeviceSimulator/device/DeviceTypes.h"
#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

/// Positions count in playing order, from 0; that order is what the player shows as its now-playing list.
class PlayQueue {
  public:
    explicit PlayQueue(std::uint32_t seed) : m_random(seed) {}

    /// `tracks` must not be empty and `start`, a position in it, lies inside. Shuffled, the chosen track
    /// comes first.
    void Fill(std::shared_ptr<const Library> library, std::shared_ptr<const ItemList> tracks,
              std::uint32_t start);
    /// Puts the order of the other tracks anew; what is current stays current.
    void SetShuffle(DevMgrShuffleMode mode);
    DevMgrShuffleMode Shuffle() const { return m_shuffle; }

    bool IsEmpty() const { return m_tracks == nullptr; }
    std::uint32_t Count() const;
    std::uint32_t Position() const { return m_position; }
    /// `position` below Count().
    void SetPosition(std::uint32_t position) { m_position = position; }
    /// The library's number of the track at `position`, which lies below Count().
    std::uint32_t TrackAt(std::uint32_t position) const;
    /// Valid unless the queue is empty.
    TrackInfo InfoAt(std::uint32_t position) const { return m_library->Track(TrackAt(position)); }
    const std::shared_ptr<const Library>& Music() const { return m_library; }

  private:
    std::uint32_t Chosen(std::uint32_t position) const;
    void Order(std::uint32_t current);
    void ShuffleTracks(std::uint32_t current);
    void ShuffleAlbums(std::uint32_t current);

    std::shared_ptr<const Library> m_library;
    std::shared_ptr<const ItemList> m_tracks;
    std::vector<std::uint32_t> m_order;  // positions in m_tracks; empty: as they stand
    std::uint32_t m_position = 0;
    DevMgrShuffleMode m_shuffle = E_DEVMGR_IPOD_SHUFFLE_NONE;
    std::minstd_rand m_random;
};

}  // namespace DeviceSimulator
