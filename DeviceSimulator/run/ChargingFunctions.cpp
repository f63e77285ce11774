// The C functions for charging, volume and the playing application.
#include "DeviceManager/DeviceManager.h"

#include <cstring>

#include "DeviceSimulator/run/Gate.h"

namespace DeviceSimulator::Answers {

namespace {

u32 eDevMgriPodSetMaxCurrent(Device& device, TimePoint, u16 milliamps) {
    device.settings.maxCurrent = milliamps;
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodSetInternalBatteryChargeState(Device& device, TimePoint, u8 allow) {
    device.settings.mayCharge = allow;
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetBatteryPowerState(const Device& device, TimePoint, BatteryState& state) {
    state = device.settings.battery;
    return DEV_MGR_SUCCESS;
}

u32 eDevmgriPodGetVolume(const Device& device, TimePoint, u8& mute, u8& volume) {
    mute = device.settings.volumeFlag;
    volume = device.settings.volume;
    return DEV_MGR_SUCCESS;
}

u32 eDevmgriPodSetVolume(Device& device, TimePoint, u8 flag, u8 volume) {
    device.settings.volumeFlag = flag;
    device.settings.volume = volume;
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetNowPlayingAppname(const Device& device, TimePoint, char*& name) {
    name = device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED ? nullptr : strdup("Music");
    return DEV_MGR_SUCCESS;
}

}  // namespace

}  // namespace DeviceSimulator::Answers

DEVICE_MANAGER_CHARGING_FUNCTIONS(DEVICE_SIMULATOR_FUNCTION)
