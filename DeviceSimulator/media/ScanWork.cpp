#include <glib.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "DeviceSimulator/media/MediaWork.h"
#include "DeviceSimulator/media/MusicTags.h"
#include "DeviceSimulator/media/PictureCover.h"
#include "ServiceUtil/LocalSocket.h"

namespace DeviceSimulator {

namespace {

using Bytes = std::vector<std::uint8_t>;

std::string DigestOf(const Bytes& bytes) {
    const std::unique_ptr<char, decltype(&g_free)> digest(
        g_compute_checksum_for_data(G_CHECKSUM_SHA256, bytes.data(), bytes.size()), g_free);
    return digest.get();
}

/// Covers go by the pictures that they are made of, so that the one that is in all files of an album is
/// decoded once and handed over once.
class CoverChoice {
  public:
    /// Gives `file` the cover of the first of `pictures` that can be decoded; with its bytes, unless a file
    /// before has had them.
    void Choose(std::vector<Bytes>& pictures, ScannedFile& file) {
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

  private:
    const CoverKey& Find(const Bytes& picture, std::string& made) {
        const auto [place, isNew] = m_covers.try_emplace(DigestOf(picture));
        if (isNew) {
            if (const auto cover = MakeCover(picture)) {
                const bool isPicture = cover->bytes == picture;
                place->second = {isPicture ? place->first : DigestOf(cover->bytes), cover->width,
                                 cover->height};
                made.assign(cover->bytes.begin(), cover->bytes.end());
            }
        }
        return place->second;
    }

    Bytes m_latest;  // the picture that came last, where it is not too large: most often the next file has it
    CoverKey m_latestCover;
    std::unordered_map<std::string, CoverKey> m_covers;  // by the picture's digest
};

bool Receive(int socket, void* into, std::size_t size) {
    ssize_t got = 0;
    while ((got = recv(socket, into, size, MSG_WAITALL)) < 0 && errno == EINTR) {
    }
    return got == static_cast<ssize_t>(size);
}

bool SendMessage(int socket, const std::string& payload) {
    std::string message;
    message.reserve(sizeof(std::uint32_t) + payload.size());
    Packer packer(message);
    packer(std::string_view(payload));
    return SendAll(socket, std::as_bytes(std::span(message)));
}

}  // namespace

int Scan(int socket) {
    CoverChoice covers;
    bool isThere = SendMessage(socket, {});
    std::uint32_t size = 0;
    while (isThere && Receive(socket, &size, sizeof size) && size <= kMostScanAnswer) {
        std::string path(size, '\0');
        if (!Receive(socket, path.data(), size)) {
            break;
        }
        MusicFile file = ReadMusicFile(path);
        covers.Choose(file.pictures, file.facts);
        std::string answer;
        Packer packer(answer);
        PackScanned(packer, file.facts);
        isThere = SendMessage(socket, answer);
    }
    return 0;
}

}  // namespace DeviceSimulator
