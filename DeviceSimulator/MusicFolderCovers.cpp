#include "DeviceSimulator/MusicFolderCovers.h"

#include <glib.h>

#include <memory>
#include <utility>

#include "DeviceSimulator/PictureCover.h"

namespace DeviceSimulator {

std::uint32_t MusicFolderCovers::Choose(std::vector<Bytes> pictures, Latest& latest) {
    for (Bytes& picture : pictures) {
        if (picture != latest.picture) {
            latest.cover = Get(picture);
            latest.picture = std::move(picture);
        }
        if (latest.cover != kNoCover) {
            return latest.cover;
        }
    }
    return kNoCover;
}

std::uint32_t MusicFolderCovers::Get(const Bytes& picture) {
    const std::unique_ptr<char, decltype(&g_free)> digest(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, picture.data(), picture.size()), g_free);
    const std::lock_guard lock(m_mutex);
    const auto [place, isNew] = m_covers.try_emplace(digest.get(), kNoCover);
    if (!isNew) {
        return place->second;
    }
    if (const auto kept = m_store.Find(place->first)) {
        place->second = *kept;
    } else if (const auto cover = MakeCover(picture)) {
        place->second = m_store.Keep(place->first, *cover);
    }
    return place->second;
}

}  // namespace DeviceSimulator
