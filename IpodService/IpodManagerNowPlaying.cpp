// What is playing: metadata, times, position, and the notification that brings them together.

#include <algorithm>

#include "IpodService/Clock.h"
#include "IpodService/IpodManager.h"
#include "IpodService/LogText.h"
#include "IpodService/Outcome.h"
#include "IpodService/RecordText.h"

namespace {

constexpr std::chrono::milliseconds kCountBusyPause{500};

// More than any player queues. A count that lies costs address space up to here and no more.
constexpr u32 kMaxListedTracks = 1u << 20;

}  // namespace

TrackTimes IpodManager::GetTrackTime() {
    TrackTimes times;
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetPlayingTrackElapsedAndTotaltime),
                                     &times.elapsed, &times.total);
    return code == DEV_MGR_SUCCESS ? times : TrackTimes{};
}

TrackMetadata IpodManager::GetTrackMetadata() {
    TrackMetadataRecord record{};
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetPlayingTrackMetaData), &record);
    if (code != DEV_MGR_SUCCESS) {
        return {};
    }
    TrackMetadata metadata{std::string(RecordText(record.title)), std::string(RecordText(record.album)),
                           std::string(RecordText(record.artist)), std::string(RecordText(record.genre)),
                           std::string(RecordText(record.composer))};
    LOG_INFO("Title    : %s\nAlbum    : %s\nArtist   : %s\nGenre    : %s\nComposer : %s\n",
             LogText(metadata.title).c_str(), LogText(metadata.album).c_str(),
             LogText(metadata.artist).c_str(), LogText(metadata.genre).c_str(),
             LogText(metadata.composer).c_str());
    return metadata;
}

NowPlayingPosition IpodManager::GetNowPlayingIndex() {
    NowPlayingPosition position;
    const u32 code =
        m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetNumPlayingTracks, .busyPause = kCountBusyPause),
                        &position.count, &position.index);
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Error in getting number of tracks in now playing list\n");
        return {};
    }
    LOG_INFO("Number of tracks in now playing list = %d\n", static_cast<int>(position.count));
    LOG_INFO("Index of now playing track = %d, i.e. Song no. %d is now playing.\n",
             static_cast<int>(position.index), static_cast<int>(position.index + 1));
    return position;
}

i32 IpodManager::GetNowPlayingList() {
    NowPlayingPosition position;
    u32 code = m_link.OnDevice(
        DEVICE_CALL(eDevMgriPodGetNumPlayingTracks, .busyPause = kCountBusyPause, .firstRepeatAtOnce = true),
        &position.count, &position.index);
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Error in getting number of tracks in now playing list\n");
        return Outcome(code);
    }
    LOG_INFO("Number of tracks in now playing list = %d\n", static_cast<int>(position.count));
    LOG_INFO("Index of now playing track = %d, i.e. Song no. %d is now plaing.\n",
             static_cast<int>(position.index), static_cast<int>(position.index + 1));
    const u32 room = std::min(position.count, kMaxListedTracks);
    const BrowseItemArray items = AllocateItems(std::max(room, 1u));
    if (items == nullptr) {
        return Outcome(DEV_MGR_UNKNOWN_FAILURE);
    }
    u32 count = room;
    code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetPlayingList), 0u, &count, items.get());
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Error in getting tracks in now playing list\n");
        return Outcome(code);
    }
    count = std::min(count, room);
    LOG_INFO("Number of tracks returned are %d\n", static_cast<int>(count));
    for (u32 i = 0; i < count; ++i) {
        LOG_INFO("Track %d :: %s\n", static_cast<int>(items[i].id + 1),
                 LogText(RecordText(items[i].name)).c_str());
    }
    return Outcome(code);
}

i32 IpodManager::SelectNowPlayingIndex(u32 index) {
    const u32 code = m_link.OnDevice(
        DEVICE_CALL(eSelectNowPlayingIndex, .successReported = true, .failureLevel = LogLevel::kInfo), index);
    LOG_INFO("%s", code == DEV_MGR_SUCCESS ? "Playing selected entry.....Exiting now playing menu\n"
                                           : "Error in selected specified entry.\n");
    return Outcome(code);
}

void IpodManager::UpdatePlayStatus() {
    if (!m_pending.TakePlayStatus(NowMs)) {
        return;
    }
    const bool isPlaying = IsPlaying();
    const NowPlayingPosition position = GetNowPlayingIndex();
    const TrackMetadata metadata = GetTrackMetadata();
    const TrackTimes times = GetTrackTime();
    m_notifications->OnTrackInfo(isPlaying, position, metadata, times);
}

void IpodManager::UpdateTrackTime() {
    if (m_pending.TakeTrackTime()) {
        m_notifications->OnTrackTimes(GetTrackTime());
    }
}
