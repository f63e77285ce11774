// The cover of the playing track: fetched into shared-memory block 1, converted from there, and handed out at
// once or from a later pass of the server loop.
#include <string>
#include <string_view>

#include "IpodService/AlbumArt.h"
#include "IpodService/IpodManager.h"
#include "IpodService/LogText.h"
#include "ServiceUtil/Base64.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr u32 kWantedHeight = 320;  // pixels
constexpr u32 kWantedWidth = 480;

/// The device has said that waiting will not bring a picture.
bool WillNeverCome(u32 code) {
    return code >= DEV_MGR_IAP_ARTWORK_NOT_SUPPORTED_BY_IPOD_ERROR && code <= DEV_MGR_IAP_NOT_PLAYING_ERROR;
}

AlbumArt ConvertOrKeep(const DeliveredPicture& picture, PictureLoader& loader) {
    try {
        return ConvertAlbumArt(picture, loader);
    } catch (const PictureError&) {
        LOG_WARN("Failed Jpeg Decode\n");
        return AsDelivered(picture);
    }
}

/// Throws what the conversion does, with a word to the log: the client's answer does not tell it.
AlbumArt ConvertOrTell(const DeliveredPicture& picture, PictureLoader& loader) {
    try {
        return ConvertAlbumArt(picture, loader);
    } catch (const PictureError& error) {
        const std::string_view text = error.what();
        LOG_WARN("Album art of %u x %u cannot be converted: %s\n", picture.width, picture.height,
                 LogText(text.substr(0, text.find('\n'))).c_str());
        throw;
    }
}

}  // namespace

struct IpodManager::AlbumArtResult {
    u32 code = DEV_MGR_SUCCESS;
    DeliveredPicture picture;  ///< into shared-memory block 1
};

IpodManager::AlbumArtResult IpodManager::ReadAlbumArt() {
    if (!m_shm1.IsInPlace()) {
        LOG_INFO("Shared memory not alloted. allocate shared memory block 1.\n");
        AllocateShm1();
    }
    if (m_shm1.Address() == 0) {
        return {};
    }
    AlbumArtResult result;
    DeliveredPicture& picture = result.picture;
    picture.height = kWantedHeight;
    picture.width = kWantedWidth;
    result.code =
        m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetPlayingTrackAlbumArt, .failureLevel = LogLevel::kInfo),
                        &picture.height, &picture.width, m_shm1.Address());
    if (result.code != DEV_MGR_SUCCESS) {
        return result;
    }
    LOG_INFO("Successfully read album art with height = %d and width = %d\n",
             static_cast<int>(picture.height), static_cast<int>(picture.width));
    picture.length = AlbumArtLength(picture.height, picture.width);
    picture.bytes = m_shm1.Bytes(picture.length);
    return result;
}

i32 IpodManager::GetPlayingTrackAlbumArt(std::string& text, u32& width, u32& height) {
    const AlbumArtResult result = ReadAlbumArt();
    if (result.code != DEV_MGR_SUCCESS) {
        return static_cast<i32>(result.code);
    }
    if (result.picture.bytes.empty()) {
        return 0;
    }
    const AlbumArt art = ConvertOrTell(result.picture, m_pictures);
    AppendBase64(text, art.bytes);
    width = art.width;
    height = art.height;
    return 0;
}

i32 IpodManager::RequestDelayedAlbumArt() {
    if (!IsDeviceConnected()) {
        return -1;
    }
    m_pending.RequestAlbumArt();
    return 0;
}

void IpodManager::ProcessDelayedAlbumArt() {
    if (!m_pending.IsAlbumArtDue()) {
        return;
    }
    LOG_INFO("performing delayed get album art!\n");
    const AlbumArtResult result = ReadAlbumArt();
    const bool answered = result.code == DEV_MGR_SUCCESS || result.code == DEV_MGR_RESULT_NONE;
    if (!answered && !WillNeverCome(result.code)) {
        return;  // Still pending, so the next pass tries again.
    }
    m_pending.DropAlbumArt();
    if (!answered) {
        return;
    }
    const bool delivered = result.code == DEV_MGR_SUCCESS && !result.picture.bytes.empty();
    const AlbumArt art = delivered ? ConvertOrKeep(result.picture, m_pictures) : AlbumArt{};
    std::string text;
    AppendBase64(text, art.bytes);
    const int trackIndex = static_cast<int>(GetNowPlayingIndex().index + 1);
    m_notifications->OnAlbumArt(text, art.width, art.height, trackIndex);
}
