#include "DeviceSimulator/media/CoverChoice.h"

#include <glib.h>

#include <memory>
#include <utility>

#include "DeviceSimulator/media/PictureCover.h"

namespace DeviceSimulator {

namespace {

std::string DigestOf(const std::vector<std::uint8_t>& bytes) {
    const std::unique_ptr<char, decltype(&g_free)> digest(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, bytes.data(), bytes.size()), g_free);
    return digest.get();
}

}  // namespace

void CoverChoice::Choose(std::vector<Bytes>& pictures, ScannedFile& file) {
    for (Bytes& picture : pictures) {
        if (m_latest.empty() || picture != m_latest) {
            m_latestCover = Find(picture, file.picture);
            m_latest = picture.size() <= kMostCoverBytes ? std::move(picture) : Bytes();
        }
        if (!m_latestCover.IsNone()) {
            file.cover = m_latestCover;
            return;
        }
    }
}

const CoverKey& CoverChoice::Find(const Bytes& picture, std::string& made) {
    const auto [place, isNew] = m_covers.try_emplace(DigestOf(picture));
    if (isNew) {
        if (const auto cover = MakeCover(picture)) {
            const bool isPicture = cover->bytes == picture;
            place->second = {isPicture ? place->first : DigestOf(cover->bytes), cover->width, cover->height};
            made.assign(cover->bytes.begin(), cover->bytes.end());
        }
    }
    return place->second;
}

}  // namespace DeviceSimulator
