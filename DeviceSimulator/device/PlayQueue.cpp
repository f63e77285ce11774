#include "DeviceSimulator/device/PlayQueue.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <string_view>
#include <utility>

namespace DeviceSimulator {

void PlayQueue::Fill(std::shared_ptr<const Library> library, std::shared_ptr<const ItemList> tracks,
                     std::uint32_t start) {
    m_library = std::move(library);
    m_tracks = std::move(tracks);
    Order(start);
}

void PlayQueue::SetShuffle(DevMgrShuffleMode mode) {
    m_shuffle = mode;
    if (!IsEmpty()) {
        Order(Chosen(m_position));
    }
}

std::uint32_t PlayQueue::Count() const {
    return IsEmpty() ? 0 : static_cast<std::uint32_t>(m_tracks->size());
}

std::uint32_t PlayQueue::TrackAt(std::uint32_t position) const {
    return (*m_tracks)[Chosen(position)];
}

std::uint32_t PlayQueue::Chosen(std::uint32_t position) const {
    return m_order.empty() ? position : m_order[position];
}

void PlayQueue::Order(std::uint32_t current) {
    m_order.clear();
    m_position = current;
    if (m_shuffle == E_DEVMGR_IPOD_SHUFFLE_NONE) {
        return;
    }
    m_order.resize(m_tracks->size());
    std::iota(m_order.begin(), m_order.end(), 0U);
    if (m_shuffle == E_DEVMGR_IPOD_SHUFFLE_TRACKS) {
        ShuffleTracks(current);
    } else {
        ShuffleAlbums(current);
    }
}

void PlayQueue::ShuffleTracks(std::uint32_t current) {
    std::swap(m_order.front(), m_order[current]);
    std::shuffle(m_order.begin() + 1, m_order.end(), m_random);
    m_position = 0;
}

void PlayQueue::ShuffleAlbums(std::uint32_t current) {
    using Album = std::pair<std::string_view, std::string_view>;
    std::map<Album, std::uint32_t> numbers;
    std::vector<std::uint32_t> albumOf(m_order.size());
    for (std::uint32_t i = 0; i < m_order.size(); ++i) {
        const TrackInfo info = m_library->Track((*m_tracks)[i]);
        const auto number = static_cast<std::uint32_t>(numbers.size());
        albumOf[i] = numbers.try_emplace(Album{info.album, info.artist}, number).first->second;
    }
    std::vector<std::uint32_t> rank(numbers.size());
    std::iota(rank.begin(), rank.end(), 0U);
    std::shuffle(rank.begin(), rank.end(), m_random);
    std::swap(rank[albumOf[current]], *std::find(rank.begin(), rank.end(), 0U));
    std::stable_sort(m_order.begin(), m_order.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return rank[albumOf[a]] < rank[albumOf[b]]; });
    m_position =
        static_cast<std::uint32_t>(std::find(m_order.begin(), m_order.end(), current) - m_order.begin());
}

}  // namespace DeviceSimulator
