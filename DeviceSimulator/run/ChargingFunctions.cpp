// The C functions for charging, volume and the playing application.
#include "DeviceManager/DeviceManager.h"

#include <cstdlib>
#include <cstring>

#include "DeviceSimulator/run/Gate.h"

using namespace DeviceSimulator;

u32 eDevMgriPodSetMaxCurrent(u32 ph, u32 dh, u16 milliamps) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSetMaxCurrent),
        [&](Device& device, TimePoint) {
            device.settings.maxCurrent = milliamps;
            return DEV_MGR_SUCCESS;
        },
        ph, dh, milliamps);
}

u32 eDevMgriPodSetInternalBatteryChargeState(u32 ph, u32 dh, u8 allow) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSetInternalBatteryChargeState),
        [&](Device& device, TimePoint) {
            device.settings.mayCharge = allow;
            return DEV_MGR_SUCCESS;
        },
        ph, dh, allow);
}

u32 eDevMgriPodGetBatteryPowerState(u32 ph, u32 dh, BatteryState* state) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetBatteryPowerState),
        [&](const Device& device, TimePoint) {
            if (state == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *state = device.settings.battery;
            return DEV_MGR_SUCCESS;
        },
        ph, dh, state);
}

u32 eDevmgriPodGetVolume(u32 ph, u32 dh, u8* mute, u8* volume) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevmgriPodGetVolume),
        [&](const Device& device, TimePoint) {
            if (mute == nullptr || volume == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *mute = device.settings.volumeFlag;
            *volume = device.settings.volume;
            return DEV_MGR_SUCCESS;
        },
        ph, dh, mute, volume);
}

u32 eDevmgriPodSetVolume(u32 ph, u32 dh, u8 flag, u8 volume) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevmgriPodSetVolume),
        [&](Device& device, TimePoint) {
            device.settings.volumeFlag = flag;
            device.settings.volume = volume;
            return DEV_MGR_SUCCESS;
        },
        ph, dh, flag, volume);
}

u32 eDevMgriPodGetNowPlayingAppname(u32 ph, u32 dh, char** name) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetNowPlayingAppname),
        [&](const Device& device, TimePoint) {
            if (name == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *name = device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED ? nullptr : strdup("Music");
            return DEV_MGR_SUCCESS;
        },
        ph, dh, name);
}
