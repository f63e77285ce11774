// The C functions that lead the player.
#include "DeviceManager/DeviceManager.h"

#include "DeviceSimulator/run/Gate.h"

namespace DeviceSimulator {

DevMgrResult PlayOn(Engine& engine, const FindDevice& find) {
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

namespace Answers {

namespace {

u32 eDevMgriPodPlay(Engine& engine, u32 ph, u32 dh) {
    return PlayOn(engine,
                  [=](ManagerModel& model, Device*& device) { return model.FindPlayer(ph, dh, device); });
}

u32 eDevMgriPodPause(Device& device, TimePoint now) {
    return device.player.Pause(now);
}

u32 eDevMgriPodStop(Device& device, TimePoint now) {
    device.player.Stop(now);
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodFastForwardRewindStart(Device& device, TimePoint now, u32 direction) {
    return direction <= DEV_MGR_SEEK_REWIND ? device.player.StartSeek(static_cast<DevMgrSeek>(direction), now)
                                            : DEV_MGR_WRONG_PARAMS;
}

u32 eDevMgriPodFastForwardRewindStop(Device& device, TimePoint now) {
    device.player.EndSeek(now);
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodPlayNextPreviousTrack(Device& device, TimePoint now, u32 direction) {
    return direction <= DEV_MGR_SKIP_PREVIOUS ? device.player.Skip(static_cast<DevMgrSkip>(direction), now)
                                              : DEV_MGR_WRONG_PARAMS;
}

}  // namespace

}  // namespace Answers

}  // namespace DeviceSimulator

DEVICE_MANAGER_PLAYBACK_FUNCTIONS(DEVICE_SIMULATOR_FUNCTION)
