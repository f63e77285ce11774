// The C functions that lead the player.
#include "DeviceSimulator/Exports.h"

#include "DeviceSimulator/Gate.h"
#include "DeviceSimulator/Playback.h"

using namespace DeviceSimulator;

namespace {

/// Modes and directions count from 0.
template <typename Mode>
bool IsMode(u32 mode, Mode last) {
    return mode <= static_cast<u32>(last);
}

}  // namespace

Result DeviceSimulator::PlayOn(Engine& engine, const FindDevice& find) {
    bool isQueueEmpty = false;
    const Result result = engine.Loop().Locked([&](Model& model, TimePoint) {
        Device* device = nullptr;
        const Result found = find(model, device);
        isQueueEmpty = found == kSuccess && device->player.Queue().IsEmpty();
        return found;
    });
    if (result != kSuccess) {
        return result;
    }
    std::shared_ptr<const Library> library;
    std::shared_ptr<const ItemList> tracks;
    if (isQueueEmpty) {
        library = engine.Music().Get();
        tracks = ItemsBelow(*library, {}, kTrack);
    }
    return engine.Loop().Locked([&](Model& model, TimePoint now) {
        Device* device = nullptr;
        const Result found = find(model, device);
        if (found != kSuccess) {
            return found;
        }
        Player& player = device->player;
        if (player.Queue().IsEmpty() && tracks != nullptr && !tracks->empty()) {
            player.Start(library, tracks, 0, now);
            return kSuccess;
        }
        return player.Play(now);
    });
}

u32 eDevMgriPodPlay(u32 ph, u32 dh) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodPlay),
        [&](Engine& engine) {
            return PlayOn(engine,
                          [=](Model& model, Device*& device) { return model.FindPlayer(ph, dh, device); });
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
            return kSuccess;
        },
        ph, dh);
}

u32 eDevMgriPodFastForwardRewindStart(u32 ph, u32 dh, u32 direction) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodFastForwardRewindStart),
        [&](Device& device, TimePoint now) {
            return IsMode(direction, SeekDirection::Rewind)
                       ? device.player.StartSeek(static_cast<SeekDirection>(direction), now)
                       : kWrongParameters;
        },
        ph, dh, direction);
}

u32 eDevMgriPodFastForwardRewindStop(u32 ph, u32 dh) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodFastForwardRewindStop),
        [](Device& device, TimePoint now) {
            device.player.EndSeek(now);
            return kSuccess;
        },
        ph, dh);
}

u32 eDevMgriPodPlayNextPreviousTrack(u32 ph, u32 dh, u32 direction) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodPlayNextPreviousTrack),
        [&](Device& device, TimePoint now) {
            return IsMode(direction, SkipDirection::Previous)
                       ? device.player.Skip(static_cast<SkipDirection>(direction), now)
                       : kWrongParameters;
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
                return kWrongParameters;
            }
            *mode = static_cast<u32>(device.player.Queue().Shuffle());
            return kSuccess;
        },
        ph, dh, mode);
}

u32 eDevMgriPodSetShuffleSetting(u32 ph, u32 dh, u32 mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSetShuffleSetting),
        [&](Device& device, TimePoint now) {
            if (!IsMode(mode, ShuffleMode::Albums)) {
                return kWrongParameters;
            }
            device.player.SetShuffle(static_cast<ShuffleMode>(mode), now);
            return kSuccess;
        },
        ph, dh, mode);
}

u32 eDevMgriPodGetRepeatSetting(u32 ph, u32 dh, u32* mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetRepeatSetting),
        [&](const Device& device, TimePoint) {
            if (mode == nullptr) {
                return kWrongParameters;
            }
            *mode = static_cast<u32>(device.player.Repeat());
            return kSuccess;
        },
        ph, dh, mode);
}

u32 eDevMgriPodSetRepeatSetting(u32 ph, u32 dh, u32 mode) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodSetRepeatSetting),
        [&](Device& device, TimePoint) {
            if (!IsMode(mode, RepeatMode::All)) {
                return kWrongParameters;
            }
            device.player.SetRepeat(static_cast<RepeatMode>(mode));
            return kSuccess;
        },
        ph, dh, mode);
}
