// Shuffle, repeat, volume, charging and what the device tells of itself.

#include <algorithm>

#include "IpodService/DeviceManagerNames.h"
#include "IpodService/IpodManager.h"
#include "IpodService/LogText.h"
#include "IpodService/Outcome.h"
#include "IpodService/RecordText.h"

namespace {

constexpr std::chrono::milliseconds kSettingBusyPause{500};
constexpr i32 kMinMilliamps = 500;
constexpr i32 kMaxMilliamps = 1000;
constexpr i32 kMaxVolume = 255;

}  // namespace

template <typename Function>
i32 IpodManager::ReadMode(const DeviceCall<Function>& call) const {
    u32 mode = 0;
    const u32 code = m_link.OnDevice(call, &mode);
    return code == DEV_MGR_SUCCESS ? static_cast<i32>(mode) : Outcome(code);
}

i32 IpodManager::GetShuffle() {
    return ReadMode(DEVICE_CALL(eDevMgriPodGetShuffleSetting, .busyPause = kSettingBusyPause));
}

i32 IpodManager::SetShuffle(u32 mode) {
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodSetShuffleSetting), mode);
    if (code == DEV_MGR_SUCCESS) {
        LOG_INFO("iPod Shuffle status changed to %s\n", ShuffleModeName(mode));
    }
    return Outcome(code);
}

i32 IpodManager::GetRepeat() {
    return ReadMode(DEVICE_CALL(eDevMgriPodGetRepeatSetting, .busyPause = kSettingBusyPause));
}

i32 IpodManager::SetRepeat(u32 mode) {
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodSetRepeatSetting), mode);
    if (code == DEV_MGR_SUCCESS) {
        LOG_INFO("iPod Repeat status changed to %s\n", RepeatModeName(mode));
    }
    return Outcome(code);
}

i32 IpodManager::GetVolume() {
    u8 mute = 0;
    u8 volume = 0;
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevmgriPodGetVolume), &mute, &volume);
    if (code == DEV_MGR_SUCCESS) {
        LOG_INFO("iPod mute status is %s and volume is %d\n", mute != 0 ? "TRUE" : "FALSE", volume);
    }
    return Outcome(code);
}

i32 IpodManager::SetVolume(i32 level) {
    // The flag is the one that reads back as the mute status.
    const u8 flag = level >= 1 ? 1 : 0;
    const u8 volume = static_cast<u8>(std::clamp(level, 0, kMaxVolume));
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevmgriPodSetVolume), flag, volume));
}

i32 IpodManager::GetNowPlayingAppName() {
    char* text = nullptr;
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetNowPlayingAppname), &text);
    const std::unique_ptr<char, FreeDeleter> name(text);
    if (code == DEV_MGR_SUCCESS) {
        LOG_INFO("Now playing App is: %s\n\n", name != nullptr ? LogText(name.get()).c_str() : "");
    }
    return Outcome(code);
}

i32 IpodManager::GetBatteryPowerState() {
    BatteryState state{};
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodGetBatteryPowerState), &state);
    if (code == DEV_MGR_SUCCESS) {
        LOG_INFO("Power State of iPod %d\n", state.powerState);
        LOG_INFO("Battery level %d\n", state.level);
    }
    return Outcome(code);
}

i32 IpodManager::SetInternalBatteryChargeState(i32 allow) {
    LOG_INFO("0 -- Apple device should not charge its internal battery\n");
    LOG_INFO("1 -- Apple device may charge its internal battery\n");
    const u8 state = allow != 0 ? 1 : 0;
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodSetInternalBatteryChargeState), state));
}

i32 IpodManager::SetMaxCurrent(i32 milliamps) {
    const u16 sent = static_cast<u16>(std::clamp(milliamps, kMinMilliamps, kMaxMilliamps));
    return Outcome(m_link.OnDevice(DEVICE_CALL(eDevMgriPodSetMaxCurrent), sent));
}

void IpodManager::LogDeviceInfo() {
    IpodInfo info{};
    if (m_link.OnDevice(DEVICE_CALL(eDevMgrGetiPodInfo), &info) != DEV_MGR_SUCCESS) {
        return;
    }
    LOG_INFO(
        "iPod name          : %s\niPod SW version    : %d:%d:%d\niPod Serial Number : %s\n"
        "iPod Model Number  : %s\n",
        LogText(RecordText(info.name)).c_str(), info.major, info.minor, info.revision,
        LogText(RecordText(info.serial)).c_str(), LogText(RecordText(info.model)).c_str());
}
