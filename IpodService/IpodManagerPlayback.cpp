// Playback control.

#include "IpodService/DeviceManagerNames.h"
#include "IpodService/IpodManager.h"
#include "IpodService/Outcome.h"

namespace {

constexpr std::chrono::milliseconds kStatusBusyPause{400};

constexpr bool IsPlayingState(u32 status) {
    return status == E_DEVMGR_IPOD_PLAY_PLAYING || status == E_DEVMGR_IPOD_PLAY_FAST_FORWARD ||
           status == E_DEVMGR_IPOD_PLAY_FAST_REWIND;
}

}  // namespace

u32 IpodManager::GetPlayStatus() {
    u32 status = E_DEVMGR_IPOD_PLAY_UNKNOWN;
    const u32 code =
        m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetPlayStatus, .busyPause = kStatusBusyPause), &status);
    if (code != DEV_MGR_SUCCESS) {
        return E_DEVMGR_IPOD_PLAY_UNKNOWN;
    }
    LOG_DEBUG("iPod play status is %s\n", PlayStateName(status));
    return status;
}

bool IpodManager::IsPlaying() {
    return IsPlayingState(GetPlayStatus());
}

bool IpodManager::IsPaused() {
    return GetPlayStatus() == E_DEVMGR_IPOD_PLAY_PAUSED;
}

bool IpodManager::IsStopped() {
    return GetPlayStatus() == E_DEVMGR_IPOD_PLAY_STOPPED;
}

bool IpodManager::TogglePlayPause() {
    switch (GetPlayStatus()) {
        case E_DEVMGR_IPOD_PLAY_PAUSED:
            return Play() == 0;
        case E_DEVMGR_IPOD_PLAY_STOPPED:
            return PlayFirstTrack() == 0;
        default:
            return Pause() == 0;
    }
}

i32 IpodManager::Play() {
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodPlay)));
}

i32 IpodManager::Pause() {
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodPause)));
}

i32 IpodManager::Stop() {
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodStop)));
}

i32 IpodManager::TrackFastForward(bool start) {
    LOG_INFO("In IPOD's manager's TrackFastForward");
    return FastForwardRewind(start, DEV_MGR_SEEK_FORWARD);
}

i32 IpodManager::TrackRewind(bool start) {
    return FastForwardRewind(start, DEV_MGR_SEEK_REWIND);
}

i32 IpodManager::FastForwardRewind(bool start, u32 direction) {
    constexpr const char* kFailureName = "eDevMgriPodStop";
    if (!start) {
        return Outcome(
            m_link.OnDevice(DEVICE_CALL(eDevMgriPodFastForwardRewindStop, .failureName = kFailureName)));
    }
    return Outcome(m_link.OnDevice(
        DEVICE_CALL(eDevMgriPodFastForwardRewindStart, .failureName = kFailureName), direction));
}

i32 IpodManager::NextTrack() {
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodPlayNextPreviousTrack), DEV_MGR_SKIP_NEXT));
}

i32 IpodManager::PreviousTrack() {
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodPlayNextPreviousTrack), DEV_MGR_SKIP_PREVIOUS));
}

i32 IpodManager::PlayFirstTrack() {
    const i32 itemCount = CountAllTracks().count;
    if (itemCount < 1) {
        return 1;
    }
    // Played all the same when the selection fails: the device then goes on with what it had.
    LOG_INFO("PlayFirstTrack eDevMgriPodSelectCategorizedIndex - itemCount = %d\n", itemCount);
    m_link.OnDevice(DEVICE_CALL(eDevMgriPodSelectCategorizedIndex, .announced = false),
                    u32{DEV_MGR_CATEGORY_TRACK}, u32{0});
    LOG_INFO("PlayFirstTrack eDevMgriPodPlay\n");
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodPlay, .announced = false)));
}

bool IpodManager::GetHasPlayableData() {
    const TrackCount tracks = CountAllTracks();
    LOG_WARN("GetHasPlayableData - eRet = %d, itemCount = %d\n", static_cast<int>(tracks.code), tracks.count);
    return tracks.count > 0;
}

IpodManager::TrackCount IpodManager::CountAllTracks() {
    if (m_connectionState != ConnectionState::BrowseReady) {
        OpenBrowseSession();
    }
    u32 count = 0;
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetNumItems, .failureReported = false),
                                     i32{DEV_MGR_WHOLE_LIBRARY}, u32{0}, u32{DEV_MGR_CATEGORY_TRACK}, &count);
    return {code, static_cast<i32>(count)};
}
