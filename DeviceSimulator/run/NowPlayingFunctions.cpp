// The C functions that tell what plays.
#include "DeviceManager/DeviceManager.h"

#include <algorithm>

#include "DeviceSimulator/device/Artwork.h"
#include "DeviceSimulator/device/FieldText.h"
#include "DeviceSimulator/run/Gate.h"

using namespace DeviceSimulator;

namespace {

/// The playing track of a device, found under the model's lock and used without it.
struct PlayingTrack {
    std::shared_ptr<const Library> library;
    u32 number = 0;
    TimePoint began;
};

DevMgrResult FindPlayingTrack(const Device& device, PlayingTrack& track) {
    const PlayQueue& queue = device.player.Queue();
    if (device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_NOT_PLAYING_ERROR;
    }
    track = {queue.Music(), queue.TrackAt(queue.Position()), device.player.TrackBegan()};
    return DEV_MGR_SUCCESS;
}

/// A cover may have to be drawn first, so it is fetched without the model's lock.
DevMgrResult DeliverAlbumArt(Engine& engine, u32 ph, u32 dh, u32 block, PictureSize& size) {
    PlayingTrack track;
    CoverSize covers = CoverSize::Stored;
    const PictureSize wanted = size;
    const ArtworkScript script = engine.Scripts().Artwork();
    const DevMgrResult result = engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
        Device* device = nullptr;
        const DevMgrResult found = model.FindPlayer(ph, dh, device);
        if (found != DEV_MGR_SUCCESS) {
            return found;
        }
        covers = device->character.covers;
        const DevMgrResult playing =
            model.Memory(ph, block).empty() ? DEV_MGR_WROG_SHARED_MEMORY : FindPlayingTrack(*device, track);
        return playing == DEV_MGR_SUCCESS && now - track.began < script.inProgress
                   ? DEV_MGR_IAP_RETRIEVING_ALBUM_ART_IN_PROGRESS
                   : playing;
    });
    if (result != DEV_MGR_SUCCESS) {
        return result;
    }
    auto cover = ApplyArtworkVariant(script.variant, track.library->Cover(track.number),
                                     track.library->Track(track.number));
    if (covers == CoverSize::Wanted) {
        cover = FitCover(std::move(cover), wanted);
    }
    const DevMgrResult delivered = engine.Loop().Locked([&](ManagerModel& model, TimePoint) {
        // The block may have been given back meanwhile.
        const auto bytes = model.Memory(ph, block);
        return bytes.empty() ? DEV_MGR_WROG_SHARED_MEMORY : DeliverPicture(cover.get(), bytes, size);
    });
    if (delivered == DEV_MGR_SUCCESS && covers == CoverSize::Length && cover != nullptr) {
        size = {static_cast<u32>(cover->bytes.size()), 0};
    }
    return delivered;
}

TrackMetadataRecord MakeMetadata(const TrackInfo& info) {
    TrackMetadataRecord record;
    CopyText(record.title, info.title);
    CopyText(record.album, info.album);
    CopyText(record.artist, info.artist);
    CopyText(record.genre, info.genre);
    CopyText(record.composer, info.composer);
    return record;
}

}  // namespace

u32 eDevMgriPodGetPlayStatus(u32 ph, u32 dh, u32* status) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetPlayStatus),
        [&](const Device& device, TimePoint) {
            if (status == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *status = static_cast<u32>(device.player.State());
            return DEV_MGR_SUCCESS;
        },
        ph, dh, status);
}

u32 eDevMgriPodGetPlayingTrackElapsedAndTotaltime(u32 ph, u32 dh, u32* elapsed, u32* total) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetPlayingTrackElapsedAndTotaltime),
        [&](const Device& device, TimePoint now) {
            if (elapsed == nullptr || total == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            if (device.player.State() == E_DEVMGR_IPOD_PLAY_STOPPED) {
                return DEV_MGR_IAP_NOT_PLAYING_ERROR;
            }
            *elapsed = device.player.ElapsedMs(now);
            *total = device.player.TotalMs();
            return DEV_MGR_SUCCESS;
        },
        ph, dh, elapsed, total);
}

u32 eDevMgriPodGetPlayingTrackMetaData(u32 ph, u32 dh, TrackMetadataRecord* record) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetPlayingTrackMetaData),
        [&](const Device& device, TimePoint) {
            if (record == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            PlayingTrack track;
            const DevMgrResult result = FindPlayingTrack(device, track);
            if (result == DEV_MGR_SUCCESS) {
                *record = MakeMetadata(track.library->Track(track.number));
            }
            return result;
        },
        ph, dh, record);
}

u32 eDevMgriPodGetPlayingTrackAlbumArt(u32 ph, u32 dh, u32* height, u32* width, u32 block) {
    return PassGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetPlayingTrackAlbumArt),
        [&](Engine& engine) {
            PictureSize size{width != nullptr ? *width : 0, height != nullptr ? *height : 0};
            DevMgrResult result = DeliverAlbumArt(engine, ph, dh, block, size);
            if (result == DEV_MGR_SUCCESS && (height == nullptr || width == nullptr)) {
                result = DEV_MGR_WRONG_PARAMS;
            }
            if (result == DEV_MGR_SUCCESS) {
                *height = size.height;
                *width = size.width;
            }
            return result;
        },
        ph, dh, InOut<u32>{height}, InOut<u32>{width}, block);
}

u32 eDevMgriPodGetNumPlayingTracks(u32 ph, u32 dh, u32* count, u32* index) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetNumPlayingTracks),
        [&](const Device& device, TimePoint) {
            if (count == nullptr || index == nullptr) {
                return DEV_MGR_WRONG_PARAMS;
            }
            *count = device.player.Queue().Count();
            *index = device.player.Queue().Position();
            return DEV_MGR_SUCCESS;
        },
        ph, dh, count, index);
}

u32 eDevMgriPodGetPlayingList(u32 ph, u32 dh, u32 start, u32* count, BrowseItem* items) {
    return PassPlayerGate(
        DEVICE_SIMULATOR_KEY(eDevMgriPodGetPlayingList),
        [&](const Device& device, TimePoint) {
            const PlayQueue& queue = device.player.Queue();
            if (count == nullptr || (items == nullptr && *count > 0)) {
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
        },
        ph, dh, start, InOut<u32>{count}, items);
}
