// The C functions that lead the player.
#include "DeviceManager/DeviceManager.h"

#include "DeviceSimulator/run/Gate.h"
#include "DeviceSimulator/run/PlayOn.h"

using namespace DeviceSimulator;

namespace {

/// Modes and directions count from 0.
template <typename Mode>
bool IsMode(u32 mode, Mode last) {
    return mode <= static_cast<u32>(last);
}

}  // namespace

MusicChoice DeviceSimulator::ChoiceOf(Engine& engine, u32 process, u32 handle) {
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        Device* device = nullptr;
        model.FindPlayer(process, handle, device);
        return device != nullptr ? device->character.music : MusicChoice{};
    });
}

DevMgrResult DeviceSimulator::PlayOn(Engine& engine, const FindDevice& find) {
    bool isQueueEmpty = false;
    MusicChoice choice;
    const DevMgrResult result = engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        Device* device = nullptr;
        const DevMgrResult found = find(model, device);
        if (found == DEV_MGR_SUCCESS) {
            isQueueEmpty = device->player.Queue().IsEmpty();
            choice = device->character.music;
        }
        return found;
    });
    if (result != DEV_MGR_SUCCESS) {
        return result;
    }
    std::shared_ptr<const Library> library;
    std::shared_ptr<const ItemList> tracks;
    if (isQueueEmpty) {
        library = engine.Music(choice)->Get();
        tracks = ItemsBelow(*library, {}, DEV_MGR_CATEGORY_TRACK);
    }
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
        Device* device = nullptr;
        const DevMgrResult found = find(model, device);
        if (found != DEV_MGR_SUCCESS) {
            return found;
        }
        Player& player = device->player;
        if (player.Queue().IsEmpty() && tracks != nullptr && !tracks->empty()) {
            player.Start(library, tracks, 0, now);
            return DEV_MGR_SUCCESS;
        }
        return player.Play(now);
    });
}

u32 eDevMgriPodPlay(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodPlay),
        [&](Engine& engine) {
            return PlayOn(engine, [=](ManagerModel& model, Device*& device) {
                return model.FindPlayer(ph, dh, device);
            });
        },
        ph, dh);
}

u32 eDevMgriPodPause(u32 ph, u32 dh) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodPause),
        [](Device& device, TimePoint now) { return device.player.Pause(now); }, ph, dh);
}

u32 eDevMgriPodStop(u32 ph, u32 dh) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodStop),
        [](Device& device, TimePoint now) {
            device.player.Stop(now);
            return DEV_MGR_SUCCESS;
        },
        ph, dh);
}

u32 eDevMgriPodFastForwardRewindStart(u32 ph, u32 dh, u32 direction) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodFastForwardRewindStart),
        [&](Device& device, TimePoint now) {
            return IsMode(direction, DEV_MGR_SEEK_REWIND)
                       ? device.player.StartSeek(static_cast<DevMgrSeek>(direction), now)
                       : DEV_MGR_WRONG_PARAMS;
        },
        ph, dh, direction);
}

u32 eDevMgriPodFastForwardRewindStop(u32 ph, u32 dh) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodFastForwardRewindStop),
        [](Device& device, TimePoint now) {
            device.player.EndSeek(now);
            return DEV_MGR_SUCCESS;
        },
        ph, dh);
}

u32 eDevMgriPodPlayNextPreviousTrack(u32 ph, u32 dh, u32 direction) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodPlayNextPreviousTrack),
        [&](Device& device, TimePoint now) {
            return IsMode(direction, DEV_MGR_SKIP_PREVIOUS)
                       ? device.player.Skip(static_cast<DevMgrSkip>(direction), now)
                       : DEV_MGR_WRONG_PARAMS;
        },
        ph, dh, direction);
}

u32 eSelectNowPlayingIndex(u32 ph, u32 dh, u32 index) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eSelectNowPlayingIndex),
        [&](Device& device, TimePoint now) { return device.player.Select(index, now); }, ph, dh, index);
}

u32 eDevMgriPodGetShuffleSetting(u32 ph, u32 dh, u32* mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetShuffleSetting),
        [&](const Device& device, TimePoint) {
            if (mode == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *mode = static_cast<u32>(device.player.Queue().Shuffle());
            return DEV_MGR_SUCCESS;
        },
        ph, dh, mode);
}

u32 eDevMgriPodSetShuffleSetting(u32 ph, u32 dh, u32 mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSetShuffleSetting),
        [&](Device& device, TimePoint now) {
            if (!IsMode(mode, E_DEVMGR_IPOD_SHUFFLE_ALBUMS)) {
                return DEV_MGR_WRONG_PARAMS;
            }
            device.player.SetShuffle(static_cast<DevMgrShuffleMode>(mode), now);
            return DEV_MGR_SUCCESS;
        },
        ph, dh, mode);
}

u32 eDevMgriPodGetRepeatSetting(u32 ph, u32 dh, u32* mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetRepeatSetting),
        [&](const Device& device, TimePoint) {
            if (mode == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *mode = static_cast<u32>(device.player.Repeat());
            return DEV_MGR_SUCCESS;
        },
        ph, dh, mode);
}

u32 eDevMgriPodSetRepeatSetting(u32 ph, u32 dh, u32 mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSetRepeatSetting),
        [&](Device& device, TimePoint) {
            if (!IsMode(mode, E_DEVMGR_IPOD_REPEAT_ALL)) {
                return DEV_MGR_WRONG_PARAMS;
            }
            device.player.SetRepeat(static_cast<DevMgrRepeatMode>(mode));
            return DEV_MGR_SUCCESS;
        },
        ph, dh, mode);
}
