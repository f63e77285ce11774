// Playback control.

#include "IpodService/DeviceManagerNames.h"
#include "IpodService/IpodManager.h"

namespace {

constexpr std::chrono::milliseconds kStatusBusyPause{400};

constexpr bool IsPlayingState(u32 status) {
    return status == E_DEVMGR_IPOD_PLAY_PLAYING || status == E_DEVMGR_IPOD_PLAY_FAST_FORWARD ||
           status == E_DEVMGR_IPOD_PLAY_FAST_REWIND;
}

}  // namespace

u32 IpodManager::GetPlayStatus() {
    u32 status = E_DEVMGR_IPOD_PLAY_UNKNOWN;
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetPlayStatus").RepeatedWhileBusy(kStatusBusyPause),
                              eDevMgriPodGetPlayStatus, &status);
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
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPlay"), eDevMgriPodPlay));
}

i32 IpodManager::Pause() {
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPause"), eDevMgriPodPause));
}

i32 IpodManager::Stop() {
    return Outcome(OnDevice(DeviceCall("eDevMgriPodStop"), eDevMgriPodStop));
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
        return Outcome(OnDevice(DeviceCall("eDevMgriPodFastForwardRewindStop").FailureNamed(kFailureName),
                                eDevMgriPodFastForwardRewindStop));
    }
    return Outcome(OnDevice(DeviceCall("eDevMgriPodFastForwardRewindStart").FailureNamed(kFailureName),
                            eDevMgriPodFastForwardRewindStart, direction));
}

i32 IpodManager::NextTrack() {
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPlayNextPreviousTrack"), eDevMgriPodPlayNextPreviousTrack,
                            DEV_MGR_SKIP_NEXT));
}

i32 IpodManager::PreviousTrack() {
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPlayNextPreviousTrack"), eDevMgriPodPlayNextPreviousTrack,
                            DEV_MGR_SKIP_PREVIOUS));
}

i32 IpodManager::PlayFirstTrack() {
    if (m_connectionState != ConnectionState::BrowseReady) {
        OpenBrowseSession();
    }
    u32 count = 0;
    OnDevice(DeviceCall("eDevMgriPodGetNumItems").FailureUnreported(), eDevMgriPodGetNumItems,
             DEV_MGR_WHOLE_LIBRARY, 0u, DEV_MGR_CATEGORY_TRACK, &count);
    const i32 itemCount = static_cast<i32>(count);
    if (itemCount < 1) {
        return 1;
    }
    // Played all the same when the selection fails: the device then goes on with what it had.
    OnDevice(DeviceCall("eDevMgriPodSelectCategorizedIndex")
                 .AnnouncedAs("PlayFirstTrack eDevMgriPodSelectCategorizedIndex - itemCount = " +
                              std::to_string(itemCount) + "\n"),
             eDevMgriPodSelectCategorizedIndex, DEV_MGR_CATEGORY_TRACK, 0u);
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPlay").AnnouncedAs("PlayFirstTrack eDevMgriPodPlay\n"),
                            eDevMgriPodPlay));
}

bool IpodManager::GetHasPlayableData() {
    if (m_connectionState != ConnectionState::BrowseReady) {
        OpenBrowseSession();
    }
    u32 count = 0;
    const u32 code =
        OnDevice(DeviceCall("eDevMgriPodGetNumItems").FailureUnreported(), eDevMgriPodGetNumItems,
                 DEV_MGR_WHOLE_LIBRARY, 0u, DEV_MGR_CATEGORY_TRACK, &count);
    const i32 itemCount = static_cast<i32>(count);
    LOG_WARN("GetHasPlayableData - eRet = %d, itemCount = %d\n", static_cast<int>(code), itemCount);
    return itemCount > 0;
}
