// Playback control.

#include "IpodService/DeviceManagerNames.h"
#include "IpodService/IpodManager.h"

namespace {

constexpr std::chrono::milliseconds kStatusBusyPause{400};
constexpr u32 kForward = 0;
constexpr u32 kRewind = 1;
constexpr u32 kNext = 0;
constexpr u32 kPrevious = 1;
constexpr i32 kWholeLibrary = -1;

constexpr bool IsPlayingState(u32 status) {
    return status == PlayState::kPlaying || status == PlayState::kFastForward ||
           status == PlayState::kFastRewind;
}

}  // namespace

u32 IpodManager::GetPlayStatus() {
    u32 status = PlayState::kUnknown;
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetPlayStatus").RepeatedWhileBusy(kStatusBusyPause),
                              eDevMgriPodGetPlayStatus, &status);
    if (code != ResultCode::kSuccess)
        return PlayState::kUnknown;
    LOG_DEBUG("iPod play status is %s\n", PlayStateName(status));
    return status;
}

bool IpodManager::IsPlaying() {
    return IsPlayingState(GetPlayStatus());
}

bool IpodManager::IsPaused() {
    return GetPlayStatus() == PlayState::kPaused;
}

bool IpodManager::IsStopped() {
    return GetPlayStatus() == PlayState::kStopped;
}

bool IpodManager::TogglePlayPause() {
    switch (GetPlayStatus()) {
        case PlayState::kPaused:
            return Play() == 0;
        case PlayState::kStopped:
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
    return FastForwardRewind(start, kForward);
}

i32 IpodManager::TrackRewind(bool start) {
    return FastForwardRewind(start, kRewind);
}

i32 IpodManager::FastForwardRewind(bool start, u32 direction) {
    constexpr const char* kFailureName = "eDevMgriPodStop";
    if (!start)
        return Outcome(OnDevice(DeviceCall("eDevMgriPodFastForwardRewindStop").FailureNamed(kFailureName),
                                eDevMgriPodFastForwardRewindStop));
    return Outcome(OnDevice(DeviceCall("eDevMgriPodFastForwardRewindStart").FailureNamed(kFailureName),
                            eDevMgriPodFastForwardRewindStart, direction));
}

i32 IpodManager::NextTrack() {
    return Outcome(
        OnDevice(DeviceCall("eDevMgriPodPlayNextPreviousTrack"), eDevMgriPodPlayNextPreviousTrack, kNext));
}

i32 IpodManager::PreviousTrack() {
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPlayNextPreviousTrack"), eDevMgriPodPlayNextPreviousTrack,
                            kPrevious));
}

i32 IpodManager::PlayFirstTrack() {
    if (m_connectionState != ConnectionState::BrowseReady)
        OpenBrowseSession();
    u32 count = 0;
    OnDevice(DeviceCall("eDevMgriPodGetNumItems").FailureUnreported(), eDevMgriPodGetNumItems, kWholeLibrary,
             0u, Category::kTrack, &count);
    const i32 itemCount = static_cast<i32>(count);
    if (itemCount < 1)
        return 1;
    // Played all the same when the selection fails: the device then goes on with what it had.
    OnDevice(DeviceCall("eDevMgriPodSelectCategorizedIndex")
                 .AnnouncedAs("PlayFirstTrack eDevMgriPodSelectCategorizedIndex - itemCount = " +
                              std::to_string(itemCount) + "\n"),
             eDevMgriPodSelectCategorizedIndex, Category::kTrack, 0u);
    return Outcome(OnDevice(DeviceCall("eDevMgriPodPlay").AnnouncedAs("PlayFirstTrack eDevMgriPodPlay\n"),
                            eDevMgriPodPlay));
}

bool IpodManager::GetHasPlayableData() {
    if (m_connectionState != ConnectionState::BrowseReady)
        OpenBrowseSession();
    u32 count = 0;
    const u32 code = OnDevice(DeviceCall("eDevMgriPodGetNumItems").FailureUnreported(),
                              eDevMgriPodGetNumItems, kWholeLibrary, 0u, Category::kTrack, &count);
    const i32 itemCount = static_cast<i32>(count);
    LOG_WARN("GetHasPlayableData - eRet = %d, itemCount = %d\n", static_cast<int>(code), itemCount);
    return itemCount > 0;
}
