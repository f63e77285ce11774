// The C functions that tell what plays, and in what order.
#include "DeviceManager/DeviceManager.h"

#include <algorithm>

#include "DeviceSimulator/device/Artwork.h"
#include "DeviceSimulator/device/FieldText.h"
#include "DeviceSimulator/run/Gate.h"

namespace DeviceSimulator::Answers {

namespace {

/// The playing track of a device, found under the model's lock and used without it.
struct PlayingTrack {
    std::shared_ptr<const Library> library;
    u32 number = 0;
    CoverSize covers = CoverSize::Stored;
};

u32 eDevMgriPodGetPlayStatus(const Device& device, TimePoint, u32& status) {
    status = static_cast<u32>(device.player.State());
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetPlayingTrackElapsedAndTotaltime(const Device& device, TimePoint now, u32& elapsed,
                                                  u32& total) {
    if (device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_NOT_PLAYING_ERROR;
    }
    elapsed = device.player.ElapsedMs(now);
    total = device.player.TotalMs();
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetPlayingTrackMetaData(const Device& device, TimePoint, TrackMetadataRecord& record) {
    if (device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_NOT_PLAYING_ERROR;
    }
    const PlayQueue& queue = device.player.Queue();
    const TrackInfo info = queue.InfoAt(queue.Position());
    CopyText(record.title, info.title);
    CopyText(record.album, info.album);
    CopyText(record.artist, info.artist);
    CopyText(record.genre, info.genre);
    CopyText(record.composer, info.composer);
    return DEV_MGR_SUCCESS;
}

/// The track whose cover is to go to `block`; it is in progress for a while after the track has begun.
DevMgrResult FindCover(ManagerModel& model, TimePoint now, u32 ph, u32 dh, u32 block,
                       std::chrono::milliseconds inProgress, PlayingTrack& track) {
    Device* device = nullptr;
    const DevMgrResult found = model.FindPlayer(ph, dh, device);
    if (found != DEV_MGR_SUCCESS) {
        return found;
    }
    if (model.Memory(ph, block).empty()) {
        return DEV_MGR_WROG_SHARED_MEMORY;
    }
    if (device->player.State() == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_NOT_PLAYING_ERROR;
    }
    if (now - device->player.TrackBegan() < inProgress) {
        return DEV_MGR_IAP_RETRIEVING_ALBUM_ART_IN_PROGRESS;
    }
    const PlayQueue& queue = device->player.Queue();
    track = {queue.Music(), queue.TrackAt(queue.Position()), device->character.covers};
    return DEV_MGR_SUCCESS;
}

/// A cover may have to be drawn first, so it is fetched without the model's lock.
u32 eDevMgriPodGetPlayingTrackAlbumArt(Engine& engine, u32 ph, u32 dh, InOut<u32> height, InOut<u32> width,
                                       u32 block) {
    const ArtworkScript script = engine.Scripts().Artwork();
    PlayingTrack track;
    const DevMgrResult found = engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
        return FindCover(model, now, ph, dh, block, script.inProgress, track);
    });
    if (found != DEV_MGR_SUCCESS) {
        return found;
    }
    if (height.pointer == nullptr || width.pointer == nullptr) {
        return DEV_MGR_WRONG_PARAMS;
    }
    auto cover = ApplyArtworkVariant(script.variant, track.library->Cover(track.number),
                                     track.library->Track(track.number));
    if (track.covers == CoverSize::Wanted) {
        cover = FitCover(std::move(cover), {*width, *height});
    }
    PictureSize size;
    const DevMgrResult delivered = engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        // The block may have been given back meanwhile.
        const auto bytes = model.Memory(ph, block);
        return bytes.empty() ? DEV_MGR_WROG_SHARED_MEMORY : DeliverPicture(cover.get(), bytes, size);
    });
    if (delivered == DEV_MGR_SUCCESS) {
        const bool isLength = track.covers == CoverSize::Length && cover != nullptr;
        *height = isLength ? 0 : size.height;
        *width = isLength ? static_cast<u32>(cover->bytes.size()) : size.width;
    }
    return delivered;
}

u32 eDevMgriPodGetNumPlayingTracks(const Device& device, TimePoint, u32& count, u32& index) {
    count = device.player.Queue().Count();
    index = device.player.Queue().Position();
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetPlayingList(const Device& device, TimePoint, u32 start, InOut<u32> count,
                              BrowseItem* items) {
    const PlayQueue& queue = device.player.Queue();
    if (items == nullptr && *count > 0) {
        return DEV_MGR_WRONG_PARAMS;
    }
    if (start > queue.Count() || (start == queue.Count() && start > 0)) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    *count = std::min(*count, queue.Count() - start);
    for (u32 i = 0; i < *count; ++i) {
        CopyText(items[i].name, queue.InfoAt(start + i).title);
        items[i].id = start + i;
    }
    return DEV_MGR_SUCCESS;
}

u32 eSelectNowPlayingIndex(Device& device, TimePoint now, u32 index) {
    return device.player.Select(index, now);
}

u32 eDevMgriPodGetShuffleSetting(const Device& device, TimePoint, u32& mode) {
    mode = static_cast<u32>(device.player.Queue().Shuffle());
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodSetShuffleSetting(Device& device, TimePoint now, u32 mode) {
    if (mode > E_DEVMGR_IPOD_SHUFFLE_ALBUMS) {
        return DEV_MGR_WRONG_PARAMS;
    }
    device.player.SetShuffle(static_cast<DevMgrShuffleMode>(mode), now);
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodGetRepeatSetting(const Device& device, TimePoint, u32& mode) {
    mode = static_cast<u32>(device.player.Repeat());
    return DEV_MGR_SUCCESS;
}

u32 eDevMgriPodSetRepeatSetting(Device& device, TimePoint, u32 mode) {
    if (mode > E_DEVMGR_IPOD_REPEAT_ALL) {
        return DEV_MGR_WRONG_PARAMS;
    }
    device.player.SetRepeat(static_cast<DevMgrRepeatMode>(mode));
    return DEV_MGR_SUCCESS;
}

}  // namespace

}  // namespace DeviceSimulator::Answers

DEVICE_MANAGER_NOW_PLAYING_FUNCTIONS(DEVICE_SIMULATOR_FUNCTION)
