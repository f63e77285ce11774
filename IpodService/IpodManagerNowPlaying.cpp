// What is playing: metadata, times, position, and the notification that brings them together.

#include <algorithm>

#include "IpodService/Clock.h"
#include "IpodService/IpodManager.h"
#include "IpodService/RecordText.h"

namespace {

constexpr std::chrono::milliseconds kCountBusyPause{500};

// More than any player queues. A count that lies costs address space up to here and no more.
constexpr u32 kMaxListedTracks = 1u << 20;

bool IsPast(u32 now, u32 deadline) {
    return static_cast<i32>(now) > static_cast<i32>(deadline);
}

}  // namespace

TrackTimes IpodManager::GetTrackTime() {
    TrackTimes times;
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetPlayingTrackElapsedAndTotaltime"),
                              eDevMgriPodGetPlayingTrackElapsedAndTotaltime, &times.elapsed, &times.total);
    return code == DEV_MGR_SUCCESS ? times : TrackTimes{};
}

TrackMetadata IpodManager::GetTrackMetadata() {
    TrackMetadataRecord record{};
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetPlayingTrackMetaData"),
                              eDevMgriPodGetPlayingTrackMetaData, &record);
    if (code != DEV_MGR_SUCCESS) {
        return {};
    }
    TrackMetadata metadata{RecordText(record.title).String(), RecordText(record.album).String(),
                           RecordText(record.artist).String(), RecordText(record.genre).String(),
                           RecordText(record.composer).String()};
    LOG_INFO("Title    : %s\nAlbum    : %s\nArtist   : %s\nGenre    : %s\nComposer : %s\n",
             metadata.title.c_str(), metadata.album.c_str(), metadata.artist.c_str(), metadata.genre.c_str(),
             metadata.composer.c_str());
    return metadata;
}

NowPlayingPosition IpodManager::GetNowPlayingIndex() {
    NowPlayingPosition position;
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetNumPlayingTracks").RepeatedWhileBusy(kCountBusyPause),
                              eDevMgriPodGetNumPlayingTracks, &position.count, &position.index);
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
    u32 code = OnDevice(DeviceCall("eDevMgriPodGetNumPlayingTracks")
                            .RepeatedWhileBusy(kCountBusyPause, DeviceCall::FirstRepeat::AtOnce),
                        eDevMgriPodGetNumPlayingTracks, &position.count, &position.index);
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Error in getting number of tracks in now playing list\n");
        return Outcome(code);
    }
    LOG_INFO("Number of tracks in now playing list = %d\n", static_cast<int>(position.count));
    LOG_INFO("Index of now playing track = %d, i.e. Song no. %d is now plaing.\n",
             static_cast<int>(position.index), static_cast<int>(position.index + 1));
    const u32 room = std::min(position.count, kMaxListedTracks);
    const BrowseItemArray items(
        static_cast<BrowseItem*>(std::calloc(std::max(room, 1u), sizeof(BrowseItem))));
    if (items == nullptr) {
        return Outcome(DEV_MGR_UNKNOWN_FAILURE);
    }
    u32 count = room;
    code =
        OnDevice(DeviceCall("eDevMgriPodGetPlayingList"), eDevMgriPodGetPlayingList, 0u, &count, items.get());
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Error in getting tracks in now playing list\n");
        return Outcome(code);
    }
    count = std::min(count, room);
    LOG_INFO("Number of tracks returned are %d\n", static_cast<int>(count));
    for (u32 i = 0; i < count; ++i) {
        const RecordText name(items[i].name);
        LOG_INFO("Track %d :: %.*s\n", static_cast<int>(items[i].id + 1), name.Length(), name.Data());
    }
    return Outcome(code);
}

i32 IpodManager::SelectNowPlayingIndex(u32 index) {
    const u32 code = OnDevice(DeviceCall("eSelectNowPlayingIndex").ReportedAlwaysAt(LogLevel::kInfo),
                              eSelectNowPlayingIndex, index);
    LOG_INFO("%s", code == DEV_MGR_SUCCESS ? "Playing selected entry.....Exiting now playing menu\n"
                                           : "Error in selected specified entry.\n");
    return Outcome(code);
}

bool IpodManager::PlayStatusIsDue() {
    const u32 deadline = m_playStatusDeadlineMs;
    const bool past = deadline != 0 && IsPast(NowMs(), deadline);
    if (!m_playStatusPending && !past) {
        return false;
    }
    if (past) {
        // An event may have set a later deadline since: that one stays.
        u32 expected = deadline;
        m_playStatusDeadlineMs.compare_exchange_strong(expected, 0);
    }
    return true;
}

void IpodManager::UpdatePlayStatus() {
    if (!PlayStatusIsDue()) {
        return;
    }
    m_playStatusPending = false;
    const bool isPlaying = IsPlaying();
    const NowPlayingPosition position = GetNowPlayingIndex();
    const TrackMetadata metadata = GetTrackMetadata();
    const TrackTimes times = GetTrackTime();
    m_notifications->OnTrackInfo(isPlaying, position, metadata, times);
}

void IpodManager::UpdateTrackTime() {
    if (!m_trackTimePending || m_playStatusPending) {
        return;
    }
    m_trackTimePending = false;
    m_notifications->OnTrackTimes(GetTrackTime());
}
