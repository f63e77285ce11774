// The platform's device-manager library, libdevicemanager.so: its C interface.
//
// Every function returns a result code, 1 (DEV_MGR_SUCCESS) for success. Out arguments are written on success
// only. Handles are never 0 when valid: `ph` is the process handle, `dh` the device handle. Every call may
// block, may come from any thread, and may be made from inside the event callback. Times are milliseconds.
//
// The event callback runs on a thread of the library's own. Once eDevMgrDeRegisterProcess has returned, the
// callback is not called again and none is still running, except when called from the callback itself.
#ifndef DEVICE_MANAGER_H
#define DEVICE_MANAGER_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "DeviceManager/DeviceManagerValues.h"

typedef uint8_t u8;
typedef uint16_t u16;
typedef uint32_t u32;
typedef int32_t i32;

// Records are exchanged in memory, little-endian and without padding beyond what stands here. Their texts end
// in a NUL when the library behaves; a reader bounds them by the field all the same.

/// One attached device, as eDevMgrGetDeviceList writes it.
typedef struct DeviceRecord {
    char name[255];
    char node[255];
    char serial[258];
    u32 handle;
    u32 productId;
    u32 vendorId;
    u32 type;
    u8 unused[8];
    char mountPath[256];  ///< meaningful for mass storage (types 0 to 13)
} DeviceRecord;
static_assert(sizeof(DeviceRecord) == 1048, "");
static_assert(offsetof(DeviceRecord, name) == 0, "");
static_assert(offsetof(DeviceRecord, node) == 255, "");
static_assert(offsetof(DeviceRecord, serial) == 510, "");
static_assert(offsetof(DeviceRecord, handle) == 768, "");
static_assert(offsetof(DeviceRecord, productId) == 772, "");
static_assert(offsetof(DeviceRecord, vendorId) == 776, "");
static_assert(offsetof(DeviceRecord, type) == 780, "");
static_assert(offsetof(DeviceRecord, unused) == 784, "");
static_assert(offsetof(DeviceRecord, mountPath) == 792, "");

/// What the callback is handed: six words whose meaning depends on the event, then texts packed one after
/// another. words[0] is the event id.
typedef struct DeviceEvent {
    u32 words[6];
    char text[1024];
} DeviceEvent;
static_assert(sizeof(DeviceEvent) == 1048, "");
static_assert(offsetof(DeviceEvent, words) == 0, "");
static_assert(offsetof(DeviceEvent, text) == 24, "");

/// A name and the id by which the library knows the item.
typedef struct BrowseItem {
    char name[256];
    u32 id;
} BrowseItem;
static_assert(sizeof(BrowseItem) == 260, "");
static_assert(offsetof(BrowseItem, name) == 0, "");
static_assert(offsetof(BrowseItem, id) == 256, "");

typedef struct TrackMetadataRecord {
    char title[255];
    char album[255];
    char artist[255];
    char genre[255];
    char composer[255];
} TrackMetadataRecord;
static_assert(sizeof(TrackMetadataRecord) == 1275, "");
static_assert(offsetof(TrackMetadataRecord, title) == 0, "");
static_assert(offsetof(TrackMetadataRecord, album) == 255, "");
static_assert(offsetof(TrackMetadataRecord, artist) == 510, "");
static_assert(offsetof(TrackMetadataRecord, genre) == 765, "");
static_assert(offsetof(TrackMetadataRecord, composer) == 1020, "");

typedef struct BatteryState {
    u8 level;
    u8 powerState;
} BatteryState;
static_assert(sizeof(BatteryState) == 2, "");
static_assert(offsetof(BatteryState, level) == 0, "");
static_assert(offsetof(BatteryState, powerState) == 1, "");

typedef struct IpodInfo {
    char name[255];
    u8 major;
    u8 minor;
    u8 revision;
    char serial[255];
    char model[255];
} IpodInfo;
static_assert(sizeof(IpodInfo) == 768, "");
static_assert(offsetof(IpodInfo, name) == 0, "");
static_assert(offsetof(IpodInfo, major) == 255, "");
static_assert(offsetof(IpodInfo, minor) == 256, "");
static_assert(offsetof(IpodInfo, revision) == 257, "");
static_assert(offsetof(IpodInfo, serial) == 258, "");
static_assert(offsetof(IpodInfo, model) == 513, "");

typedef void (*DeviceEventCallback)(const DeviceEvent* event, u32 ph);

#ifdef __cplusplus
extern "C" {
#endif

// Session, memory, devices

u32 eDevMgrRegisterProcess(u32* ph, DeviceEventCallback callback);
u32 eDevMgrDeRegisterProcess(u32 ph);
/// `size`: in, the bytes wanted; out, the bytes granted. `block`: out, the block's address in the calling
/// process, below 4 GiB so that it fits 32 bits everywhere.
u32 eDevMgrAllocateSharedMemory(u32 ph, u32* size, u32* block);
u32 eDevMgrDeAllocateSharedMemory(u32 ph, u32 block);
u32 eDevMgrGetNumDevices(u32 ph, u32* count);
/// `count`: in, the records that `list` has room for; out, the records written. `reserved` is 0.
u32 eDevMgrGetDeviceList(u32 ph, DeviceRecord* list, u32 reserved, u32* count);
u32 eDevMgrOpenDevice(u32 ph, u32 dh);
u32 eDevMgrCloseDevice(u32 ph, u32 dh);
u32 eDevMgrGetiPodInfo(u32 ph, u32 dh, IpodInfo* info);

// Charging, volume, application

u32 eDevMgriPodSetMaxCurrent(u32 ph, u32 dh, u16 milliamps);
u32 eDevMgriPodSetInternalBatteryChargeState(u32 ph, u32 dh, u8 allow);
u32 eDevMgriPodGetBatteryPowerState(u32 ph, u32 dh, BatteryState* state);
u32 eDevmgriPodGetVolume(u32 ph, u32 dh, u8* mute, u8* volume);
u32 eDevmgriPodSetVolume(u32 ph, u32 dh, u8 flag, u8 volume);
/// `name`: out, text on the heap that the caller frees with free(); may be null.
u32 eDevMgriPodGetNowPlayingAppname(u32 ph, u32 dh, char** name);

// Database and browsing
//
// A parent of (-1, 0) stands for the whole library. `index` and `parentIndex` are ids as eDevMgriPodGetItems
// gave them.

/// Progress comes as events. `path` may be ignored.
u32 eDevMgriPodStartBuildingDatabase(u32 ph, u32 dh, char* path);
u32 eDevMgriPodOpenMdBrowseSession(u32 ph, u32 dh, u32 mode);
/// Takes every narrowing of the path back; what plays goes on.
u32 eDevMgriPodResetDatabase(u32 ph, u32 dh);
u32 eDevMgriPodCloseMdBrowseSession(u32 ph, u32 dh);
/// Takes the last narrowing of the path back; what plays goes on.
u32 eDevMgriPodBrowseOneLevelBack(u32 ph, u32 dh);
/// `mask`: out, for 512 the categories at the top, else the category that follows `category`.
u32 eDevMgriPodMdGetCategories(u32 ph, u32 dh, u32 category, u32* mask);
u32 eDevMgriPodGetNumItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32* count);
/// `count`: in, the items wanted; out, the items written.
u32 eDevMgriPodGetItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32 start,
                        u32* count, BrowseItem* items);
/// A track is started, with the list that it stands in as the queue; any other category narrows the path.
u32 eDevMgriPodSelectCategorizedIndex(u32 ph, u32 dh, u32 category, u32 index);

// Playback

u32 eDevMgriPodPlay(u32 ph, u32 dh);
u32 eDevMgriPodPause(u32 ph, u32 dh);
u32 eDevMgriPodStop(u32 ph, u32 dh);
/// `direction`: 0 forward, 1 rewind.
u32 eDevMgriPodFastForwardRewindStart(u32 ph, u32 dh, u32 direction);
u32 eDevMgriPodFastForwardRewindStop(u32 ph, u32 dh);
/// `direction`: 0 next, 1 previous.
u32 eDevMgriPodPlayNextPreviousTrack(u32 ph, u32 dh, u32 direction);
u32 eDevMgriPodGetPlayStatus(u32 ph, u32 dh, u32* status);
u32 eDevMgriPodGetPlayingTrackElapsedAndTotaltime(u32 ph, u32 dh, u32* elapsed, u32* total);
u32 eDevMgriPodGetPlayingTrackMetaData(u32 ph, u32 dh, TrackMetadataRecord* record);
/// `height` and `width`: in, the size wanted in pixels; out, the size delivered. `block` then holds the
/// picture within width * height * 2 bytes, zeros behind it. Where one of the two is 0, the other is the
/// length in bytes.
u32 eDevMgriPodGetPlayingTrackAlbumArt(u32 ph, u32 dh, u32* height, u32* width, u32 block);
/// `index`: out, 0-based.
u32 eDevMgriPodGetNumPlayingTracks(u32 ph, u32 dh, u32* count, u32* index);
/// `count`: in, the items wanted; out, the items written.
u32 eDevMgriPodGetPlayingList(u32 ph, u32 dh, u32 start, u32* count, BrowseItem* items);
u32 eSelectNowPlayingIndex(u32 ph, u32 dh, u32 index);
u32 eDevMgriPodGetShuffleSetting(u32 ph, u32 dh, u32* mode);
u32 eDevMgriPodSetShuffleSetting(u32 ph, u32 dh, u32 mode);
u32 eDevMgriPodGetRepeatSetting(u32 ph, u32 dh, u32* mode);
u32 eDevMgriPodSetRepeatSetting(u32 ph, u32 dh, u32 mode);

#ifdef __cplusplus
}
#endif

#endif
