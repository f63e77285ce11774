// The platform's device-manager library, libdevicemanager.so: the C interface by which the player service
// reaches the devices on the USB side. This header and DeviceManagerValues.h are all that is needed to write
// such a library. "The service" is the program that calls it; what it does with an answer is told where that
// matters to one who gives the answer.
//
// Contents: rules for all functions; the life of a session; records; functions (session and memory, devices,
// charging and volume, database and browsing, playback, now playing); events; layout checks.
//
// Build: C11 or C++20, the folder above this one in the include path. A library defines all 41 functions,
// with C linkage, default visibility and the platform's default calling convention, and is linked as a shared
// object with SONAME libdevicemanager.so (cc -shared -fPIC -Wl,-soname,libdevicemanager.so). The service
// binds every function when it is loaded: one that is missing keeps it from starting. Functions marked "not
// called today" belong to the interface all the same; DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE is an answer.
//
// Rules for all functions:
// - The result is a DevMgrResult. Out arguments are written on DEV_MGR_SUCCESS only, and then all of them.
// - `ph` is the process handle, from eDevMgrRegisterProcess; `dh` the device handle, from the device list.
//   They are never 0 when valid. Calls do come with a `dh` of 0, and with one whose device is gone: they must
//   fail with DEV_MGR_INVALID_DEVICE_HANDLE. The service takes a success there for no device.
// - Checks, in this order: `ph` (DEV_MGR_PROCESS_NOT_REGISTERED), `dh` (DEV_MGR_INVALID_DEVICE_HANDLE),
//   opened by this process (DEV_MGR_DEVICE_NOT_OPENED), a player (DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE),
//   for browsing a browse session (DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED), then the other arguments
//   (DEV_MGR_WRONG_PARAMS). Whatever fails otherwise: DEV_MGR_DEVICE_NOT_RESPONDING, DEV_MGR_UNKNOWN_FAILURE.
// - Times are milliseconds. Texts end in a NUL and are UTF-8; the service marks ill-formed bytes on the wire
//   and reads no text beyond its field. Records are little-endian, in the layout checked at the end.
// - Memory that a pointer argument names is the caller's and is used during the call only, but for the text
//   of eDevMgriPodGetNowPlayingAppname and the shared blocks.
//
// Threads:
// - A call may block, may come from any thread, and calls may overlap. The service's own thread makes its
//   calls one after another and serves its clients in between: a call that takes a second holds them up for
//   one.
// - The event callback runs on a thread of the library's own; for each process that is registered one event
//   at a time, in the order in which things happened. It may run while a call is being carried out, and tell
//   of that call's effect before it returns.
// - A callback takes the time of a message to clients; DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE takes that of
//   stopping and starting an audio stream, up to seconds. Later events wait meanwhile; calls must not.
// - A callback may call any function, eDevMgrDeRegisterProcess included. So the library holds no lock during
//   a callback that any function takes.
#ifndef DEVICE_MANAGER_H
#define DEVICE_MANAGER_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#include "DeviceManager/DeviceManagerValues.h"

/// Raised with every change after which a library and a service built from different headers would
/// misunderstand each other: of a function, a record, a value or a promise. Not raised for a clearer text,
/// nor for a value that those who do not know it may ignore. It is for the compiler; nothing asks it at run
/// time.
#define DEV_MGR_INTERFACE_VERSION 1

typedef uint8_t u8;
typedef uint16_t u16;
typedef uint32_t u32;
typedef int32_t i32;

// The life of a session: what the service calls, in this order. "Each pass" is once a second without an open
// device, and behind each request of its clients; with one, whenever there is something to do.
//
//  1. eDevMgrRegisterProcess, each pass until it succeeds; then eDevMgrAllocateSharedMemory, 2 MiB, once.
//  2. eDevMgrGetNumDevices, each pass; when there are any, once more, with eDevMgrGetDeviceList behind it.
//  3. eDevMgrOpenDevice for each record, in order, until one succeeds: an iAP or iAP2 device is then taken.
//  4. eDevMgriPodSetMaxCurrent(1000) and eDevMgriPodSetInternalBatteryChargeState(1), at the end of each such
//     pass, with device handle 0 when none was taken.
//  5. iAP2 only: eDevMgriPodStartBuildingDatabase, and waiting, without a limit, for
//     DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO with 100. When the call fails, 6 follows at once.
//  6. eDevMgriPodOpenMdBrowseSession(1). When it fails: reset, close, open once more; then
//     eDevMgrCloseDevice.
//  7. Browsing and playing, as clients ask; playing also before 6. Events tell what changes.
//  8. After DEV_MGR_EVENT_DEVICE_DISCONNECTED for the open device: eDevMgrCloseDevice with the handle that is
//     gone, then 2. A device that comes back is a new one with a new handle.
//  9. At the service's end, in whatever state, and after DEV_MGR_EVENT_DEVICE_MANAGER_EXITED:
//     eDevMgriPodCloseMdBrowseSession and eDevMgrCloseDevice (device handle 0 when none is open),
//     eDevMgrDeAllocateSharedMemory, eDevMgrDeRegisterProcess.
//
// The sound does not come this way: the service records the USB sound card that the player is (ALSA hw:1,0).

// Records

/// One attached device, as eDevMgrGetDeviceList writes it.
typedef struct DeviceRecord {
    char name[255];  ///< for people. That of the last record of a list names the database file of the device
    char node[255];  ///< for the log, such as "/dev/hidraw0"
    char serial[258];  ///< for the log
    u32 handle;
    u32 productId;
    u32 vendorId;
    u32 type;  ///< a DevMgrDeviceType from 0 to 24
    u8 unused[8];
    char mountPath[256];  ///< of mass storage (types 0 to 13); otherwise ""
} DeviceRecord;

/// What the callback is handed, to be read while it runs. words[0] is a DevMgrEvent; the other words and the
/// texts are told in the table of events. Words and texts that the table does not name are 0.
typedef struct DeviceEvent {
    u32 words[6];
    char text[1024];  ///< texts one after another, each with its NUL
} DeviceEvent;

/// An item of a list.
typedef struct BrowseItem {
    char name[256];
    u32 id;  ///< its 0-based position in that list
} BrowseItem;

/// Of the playing track; "" for what is not known.
typedef struct TrackMetadataRecord {
    char title[255];
    char album[255];
    char artist[255];
    char genre[255];
    char composer[255];
} TrackMetadataRecord;

/// Both are only logged; the interface lays down no unit.
typedef struct BatteryState {
    u8 level;
    u8 powerState;
} BatteryState;

/// Only logged; the software's version is major:minor:revision.
typedef struct IpodInfo {
    char name[255];
    u8 major;
    u8 minor;
    u8 revision;
    char serial[255];
    char model[255];
} IpodInfo;

/// `event` is the library's and lasts as long as the callback; `ph` is the process that is told.
typedef void (*DeviceEventCallback)(const DeviceEvent* event, u32 ph);

#ifdef __cplusplus
extern "C" {
#endif

// Functions: session and memory

/// Makes the caller a process that is told of events. `*ph` is written before the first callback, which may
/// come before this returns. A process of the operating system may register more than once, each with a
/// handle of its own. DEV_MGR_NO_MORE_PROCESS_ALLOWED, DEV_MGR_PROCESS_REGISTRY_FAILED; tried again each
/// pass.
u32 eDevMgrRegisterProcess(u32* ph, DeviceEventCallback callback);

/// Ends it: waits for a callback to this process that is running, and none comes afterwards. Called from
/// within that callback it does not wait, and the running one is the last. Closes the devices and frees the
/// blocks that the process still has. On failure nothing has changed, and the service may call again.
u32 eDevMgrDeRegisterProcess(u32 ph);

/// Lends a block of memory for pictures. `*size`: in, the bytes wanted (the service asks for 2,097,152); out,
/// the bytes granted, not more. `*block`: the address in the calling process, readable and writable, not 0
/// and below 4 GiB, so that a u32 holds it on 64-bit machines too (Linux: mmap with MAP_32BIT, or a hint).
/// The block stays the library's and at its place until it is freed. DEV_MGR_MEMORY_ERROR,
/// DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY; the service then goes on without pictures.
u32 eDevMgrAllocateSharedMemory(u32 ph, u32* size, u32* block);

/// DEV_MGR_WROG_SHARED_MEMORY: `block` is none of this process; 0 does come, after a failed allocation.
u32 eDevMgrDeAllocateSharedMemory(u32 ph, u32 block);

// Functions: devices

/// How many records eDevMgrGetDeviceList has. Success with 0 when nothing is attached.
u32 eDevMgrGetNumDevices(u32 ph, u32* count);

/// Writes the attached devices of types 0 to 24 from list[0] on, those too that were there before the process
/// registered (of which no event need tell). `*count`: in, the records that `list` has room for; out, those
/// written, not more, even when the number has changed since it was asked for. `reserved` is 0.
///
/// Players belong in front: the service opens one after another, and the first that can be opened ends its
/// search, whatever it is. (After a mass-storage device, which it opens and does not use, it tells its
/// clients of a connection and looks again each pass.)
u32 eDevMgrGetDeviceList(u32 ph, DeviceRecord* list, u32 reserved, u32* count);

/// Opens a device for this process: from here on it takes calls and its play and database events are told. A
/// mass-storage device may be opened over and over. DEV_MGR_DEVICE_ALREADY_OPENED, DEV_MGR_DEVICE_NOT_READY
/// (locked), DEV_MGR_DEVICE_OPEN_FAILED: the next record of the list is tried, and all of them in a later
/// pass.
u32 eDevMgrOpenDevice(u32 ph, u32 dh);

/// Ends the process's browse session and a running build; whether music plays on is the player's. The service
/// takes the device for closed whatever is answered.
u32 eDevMgrCloseDevice(u32 ph, u32 dh);

/// Not called today.
u32 eDevMgrGetiPodInfo(u32 ph, u32 dh, IpodInfo* info);

// Functions: charging, volume, application. Failures are logged and change nothing.

/// The current that the player may draw, 500 to 1000 mA.
u32 eDevMgriPodSetMaxCurrent(u32 ph, u32 dh, u16 milliamps);
/// `allow`: 1, the player may charge its battery; 0, it should not.
u32 eDevMgriPodSetInternalBatteryChargeState(u32 ph, u32 dh, u8 allow);
/// Not called today.
u32 eDevMgriPodGetBatteryPowerState(u32 ph, u32 dh, BatteryState* state);
/// `mute`: the flag as it was set. `volume`: 0 to 255. Not called today.
u32 eDevmgriPodGetVolume(u32 ph, u32 dh, u8* mute, u8* volume);
/// `flag` is 1 with a volume of 1 to 255, and 0 with 0. Not called today.
u32 eDevmgriPodSetVolume(u32 ph, u32 dh, u8 flag, u8 volume);
/// `*name`: text from malloc() that the caller gives to free(); null when there is none. Not called today.
u32 eDevMgriPodGetNowPlayingAppname(u32 ph, u32 dh, char** name);

// Functions: database and browsing
//
// A browse session has a path, empty at first: the items by which the library has been narrowed, such as a
// genre and then an artist. Selecting an item other than a track appends it, eDevMgriPodBrowseOneLevelBack
// takes the last one off, eDevMgriPodResetDatabase all of them. What plays goes on.
//
// A list is named by a parent pair and a category. The pair (DEV_MGR_WHOLE_LIBRARY, 0) means the whole
// library, whatever the path. Any other pair is (category, id) of an item: when that is in the path, it means
// all that the path narrows to, from its start to that item; when not, that item of the whole library, and
// where there is no such item an empty list. The service asks below the last item of the path. Before a
// selection it also counts with a level's own category as the parent's, such as (ARTIST, 3, ARTIST): any
// answer does, it is not used.
//
// Ids are 0-based positions in the list as eDevMgriPodGetItems gives it. Lists keep their order while the
// device is open. The service selects track 0 to play "the first track" without having asked for the list, so
// ids that are not positions would break it.

/// iAP2 only. Starts making the database, and returns; DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO tells the
/// progress. 100 must come also when there was nothing to do, or the service waits for ever. `path` is where
/// a library that keeps the database in a file may put it ("./root/iap2db/NAME.db", relative to the working
/// folder); it may be ignored. The service deletes *.db in /home/root/iap2db when it closes a device.
/// DEV_MGR_IAP_DB_BUILDING_FAILED, DEV_MGR_IAP_DB_BUILDING_IN_PROGRESS, on other devices
/// DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE. After a failure the device is browsed all the same, but clients
/// are not told that it has come, and the next record of the list is tried: success and 100 serve better.
u32 eDevMgriPodStartBuildingDatabase(u32 ph, u32 dh, char* path);

/// `mode` is 1. One session a process and device. DEV_MGR_MD_BROWSE_SESSION_ALREADY_OPENED,
/// DEV_MGR_IAP_DB_BUILDING_IN_PROGRESS, DEV_MGR_OPEN_MD_BROWSE_SESSION_FAILED.
u32 eDevMgriPodOpenMdBrowseSession(u32 ph, u32 dh, u32 mode);
/// Empties the path. The service calls it after a track was selected, too.
u32 eDevMgriPodResetDatabase(u32 ph, u32 dh);
u32 eDevMgriPodCloseMdBrowseSession(u32 ph, u32 dh);
/// DEV_MGR_ALREADY_ON_TOP_LEVEL: the path is empty.
u32 eDevMgriPodBrowseOneLevelBack(u32 ph, u32 dh);

/// `*mask`, for DEV_MGR_CATEGORY_TOP_LEVEL: the categories that the library offers, of the six from PLAYLIST
/// to COMPOSER; the others are not shown. For a category: the one that follows it, and 0 where none does. The
/// category's own bit may be there too; two others are an answer that the service cannot follow.
///     playlist: track, artist: album, album: track, genre: artist, composer: album, track: 0
/// DEV_MGR_INVALID_CATEGORY_SELECTION: no such category.
u32 eDevMgriPodMdGetCategories(u32 ph, u32 dh, u32 category, u32* mask);

/// How many items of `category` there are below the parent. Changes nothing. More than 1,000,000 are not
/// shown. DEV_MGR_INVALID_BASE_CATEGORY (the parent's), DEV_MGR_INVALID_CATEGORY_SELECTION.
u32 eDevMgriPodGetNumItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32* count);

/// The items from the `start`-th (0-based) on, written from items[0] without a gap. `*count`: in, the items
/// wanted, for which `items` has room, up to the whole list; out, those written, not more. Changes nothing.
/// As eDevMgriPodGetNumItems, and DEV_MGR_IAP_INVALID_INDEX: `start` is behind the last item, but for 0 in an
/// empty list.
u32 eDevMgriPodGetItems(u32 ph, u32 dh, i32 parentCategory, u32 parentIndex, u32 category, u32 start,
                        u32* count, BrowseItem* items);

/// Selects item `index` of the list of `category` below the path. A track starts to play, with that list as
/// the now-playing list, and the path stays; any other item is appended to the path.
/// DEV_MGR_INVALID_CATEGORY_SELECTION, DEV_MGR_IAP_INVALID_INDEX; the path is then as it was.
u32 eDevMgriPodSelectCategorizedIndex(u32 ph, u32 dh, u32 category, u32 index);

// Functions: playback. They need no browse session.
//
// A function that changes something returns when it is under way; events tell when it has happened.
// DEV_MGR_IAP_IPOD_IN_STOP_STATE: nothing plays. DEV_MGR_IAP_APP_BUSY from eDevMgriPodGetPlayStatus makes the
// service ask again after 400 ms, from eDevMgriPodGetNumPlayingTracks, eDevMgriPodGetShuffleSetting and
// eDevMgriPodGetRepeatSetting after 500 ms, for as long as it is answered, and all clients wait. From any
// other function it is a failure like another.

/// Starts, or resumes, and ends a seek; while playing, success without an effect. It follows a selected track
/// at once when the first track is wanted. With no now-playing list: the whole library from its first track.
u32 eDevMgriPodPlay(u32 ph, u32 dh);
/// While paused, success without an effect.
u32 eDevMgriPodPause(u32 ph, u32 dh);
/// Not called today.
u32 eDevMgriPodStop(u32 ph, u32 dh);
/// `direction`: a DevMgrSeek. Seeks until eDevMgriPodFastForwardRewindStop.
u32 eDevMgriPodFastForwardRewindStart(u32 ph, u32 dh, u32 direction);
/// Success without an effect when nothing seeks.
u32 eDevMgriPodFastForwardRewindStop(u32 ph, u32 dh);
/// `direction`: a DevMgrSkip. What is paused stays so. Whether "previous" first goes back to the track's own
/// start, and what comes behind the ends of the list, is the player's.
u32 eDevMgriPodPlayNextPreviousTrack(u32 ph, u32 dh, u32 direction);
/// `mode`: a DevMgrShuffleMode. Clients are answered as it is read back.
u32 eDevMgriPodGetShuffleSetting(u32 ph, u32 dh, u32* mode);
u32 eDevMgriPodSetShuffleSetting(u32 ph, u32 dh, u32 mode);
/// `mode`: a DevMgrRepeatMode. Clients are answered as it is read back.
u32 eDevMgriPodGetRepeatSetting(u32 ph, u32 dh, u32* mode);
u32 eDevMgriPodSetRepeatSetting(u32 ph, u32 dh, u32 mode);

// Functions: now playing. The service asks for status, position, metadata and times, in this order, after
// DEV_MGR_EVENT_PLAY_TRACK_CHANGED and DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, and tells its clients all of
// it; what fails counts as not playing, 0 or "". DEV_MGR_IAP_NOT_PLAYING_ERROR fits while it is stopped.

/// `*status`: a DevMgrPlayState.
u32 eDevMgriPodGetPlayStatus(u32 ph, u32 dh, u32* status);
/// Both in ms; `elapsed` from the track's start.
u32 eDevMgriPodGetPlayingTrackElapsedAndTotaltime(u32 ph, u32 dh, u32* elapsed, u32* total);
u32 eDevMgriPodGetPlayingTrackMetaData(u32 ph, u32 dh, TrackMetadataRecord* record);

/// Writes the playing track's cover, a JPEG, to the start of `block` (from eDevMgrAllocateSharedMemory, never
/// beyond what was granted). `*height` and `*width`, in this order: in, the size wanted in pixels (320, 480);
/// out, the size delivered, which need not be that.
///
/// The service does not look for the JPEG's end. It takes width * height * 2 bytes, so the picture must fit
/// them, and the rest of them, as far as the block goes, is zeros. Or `*height` is 0 and `*width` the length
/// in bytes (or the other way round); both 0: success without a picture. With a `*height` of at most 320
/// clients get these bytes as they are, zeros included, and the size as delivered; above it they get a
/// smaller JPEG.
///
/// DEV_MGR_IAP_ARTWORK_NOT_SUPPORTED_BY_IPOD_ERROR, ..._NOT_PRESENT_ERROR, ..._READ_ERROR and
/// DEV_MGR_IAP_NOT_PLAYING_ERROR (71 to 74) mean that there will be none. Any other failure, such as
/// DEV_MGR_IAP_RETRIEVING_ALBUM_ART_IN_PROGRESS or DEV_MGR_NOT_READY, makes the service ask again every 25 ms
/// for the picture that a client waits for. DEV_MGR_WROG_SHARED_MEMORY: no such block.
/// DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY: the picture is larger than it; as that would be asked for again and
/// again, answer ..._READ_ERROR or deliver a smaller one.
u32 eDevMgriPodGetPlayingTrackAlbumArt(u32 ph, u32 dh, u32* height, u32* width, u32 block);

/// The now-playing list: the number of its tracks, and which of them, 0-based, is the current one. 0 and 0
/// when there is none.
u32 eDevMgriPodGetNumPlayingTracks(u32 ph, u32 dh, u32* count, u32* index);
/// As eDevMgriPodGetItems, for the tracks of the now-playing list in playing order. Not called today.
u32 eDevMgriPodGetPlayingList(u32 ph, u32 dh, u32 start, u32* count, BrowseItem* items);
/// Plays that track (0-based) of the now-playing list. DEV_MGR_IAP_INVALID_INDEX. Not called today.
u32 eSelectNowPlayingIndex(u32 ph, u32 dh, u32 index);

#ifdef __cplusplus
}
#endif

// Events. w1 to w5 are words[1] to words[5]. Texts lie from text[0] on, each behind the NUL of the one before
// it, unless a place is given. Events of a device's playback and database go to the processes that have it
// open, the others to every process. A library sends those in the first table; the others it may leave out.
//
// clang-format off
//
//  id  DEV_MGR_EVENT_...          words                   what the service does
//   1  DEVICE_MANAGER_EXITED                              stops: ends its session and its server
//   3  DEVICE_CONNECTED           w1 type; see below      logs it: devices are found by the list, where this
//                                                         one must stand by now
//   4  DEVICE_DISCONNECTED        w1 type; see below      the open one: closes it in its next pass and tells
//                                                         clients
//   8  PLAY_TIME                  w1 elapsed ms           tells clients. Sent once a second while it plays
//   9  PLAY_STARTED                                       tells clients that it plays. Sent after a pause, too
//  10  PLAY_PAUSED                                        tells clients that it is paused
//  13  PLAY_TRACK_CHANGED                                 queries what plays and tells clients. Sent for the
//                                                         first track and for one that repeats, too
//  17  IPOD_NEW_TRACK_SAMPLE_RATE w1 Hz                   restarts a running audio stream at that rate. Sent
//                                                         when it differs from the one last told
//  34  IPOD_PLAY_CONTEXT_SETTING  w1 number of tracks     as 13, at once and again a second later. Sent when
//                                                         the now-playing list has changed
//  37  DB_BUILD_PROGRESS_INFO     w1 percent              from 100 on: the database is built, browsing begins
//
// These are logged, and nothing else comes of them:
//
//  id                             words                   texts
//  11  PAUSE_REMOVED              w5 handle               (9 tells that playing goes on)
//  12  PLAY_STOPPED               w5 handle
//  14  FAST_FW_STARTED            w5 handle
//  15  FAST_RW_STARTED            w5 handle
//  16  FAST_FW_RW_STOPPED         w5 handle
//  18  AUTH_STARTED               w5 handle               node
//  19  AUTH_SUCCESS               w5 handle               node
//  20  AUTH_FAILURE               w5 handle               node
//  32  IPOD_SHUFFLE_SETTING       w1 mode
//  33  IPOD_REPEAT_SETTING        w1 mode
//  35  AUTH_LOCKED                w5 handle               node
//  36  AUTH_UNLOCKED              w5 handle               node
//      DEV_MGR_IPOD_...
//  21  APP_SESSION_OPENED         w4 session, w5 handle   protocol
//  22  APP_SESSION_CLOSED         w4 session, w5 handle   protocol
//  23  APP_DATA_RECEIVED          w3 length, w4 session,  text[0], text[1]: y; text[2], text[3]: x; big-endian
//                                 w5 handle
//  26  NOW_PLAYING_APP_BUNDLE_NAME   w5 handle            name
//  27  NOW_PLAYING_APP_DISPLAY_NAME  w5 handle            name
//  28  APP_SESSION_SPACE_AVAILABLE   w4 session, w5 handle
//  31  CHARGING_INFO              w4 kind, w5 value
//      of 2, 5, 6, 7, 24, 25, 29 and 30, and of unknown ones, the id alone is logged
//
// DEVICE_CONNECTED, by w1:
//
//  14-24  iAP, iAP2, MTP          w2 handle, w3 product,  name, node, serial
//                                 w4 vendor, w5 (MTP only)
//                                 the name's length
//  0-13   mass storage            w2 DevMgrMountStatus,   name (1 or 2 bytes a character), ended by two NULs;
//                                 w3 product, w4 vendor,  from text[255] on: mount path, serial
//                                 w5 handle               (after DEV_MGR_MOUNT_FAILED none)
//  27     no medium               w3 product, w4 vendor,  name, mount path
//                                 w5 handle
//  26     hub                     w2 product, w3 vendor
//  25     unknown                                         (one more follows, if the device is supported)
//  28     unsupported
//
// DEVICE_DISCONNECTED, by w1. But for 25 and 26, w2 must not be 0: that is the open device when none is open.
//
//  0-24   players, mass storage   w2 handle, w3 product,  name; from text[w5] on: node or mount path, serial
//                                 w4 vendor, w5 offset
//  27, 28                         as 0-24                 name; from text[w5] on: serial
//  26     hub                     w2 product, w3 vendor
//  25     unknown
//
// What a player sends as it plays, in order:
//
//  plugged in                     3, 18, 19 (locked: 35 instead of 19; once unlocked 36, 19)
//  a track is selected            34, 13, 17 (a new rate), 9 (unless it was playing); then 8 each second
//  next, previous, a track's end  13, 17 (a new rate)
//  pause, resume                  10; 9
//  the list's end, stop           12
//  seek                           14 or 15, 8..., 16
//  shuffle, repeat are set        32 or 33, and 34 where the now-playing list has changed
//  unplugged                      4
//
// clang-format on

// Layout

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
static_assert(sizeof(DeviceEvent) == 1048, "");
static_assert(offsetof(DeviceEvent, words) == 0, "");
static_assert(offsetof(DeviceEvent, text) == 24, "");
static_assert(sizeof(BrowseItem) == 260, "");
static_assert(offsetof(BrowseItem, name) == 0, "");
static_assert(offsetof(BrowseItem, id) == 256, "");
static_assert(sizeof(TrackMetadataRecord) == 1275, "");
static_assert(offsetof(TrackMetadataRecord, title) == 0, "");
static_assert(offsetof(TrackMetadataRecord, album) == 255, "");
static_assert(offsetof(TrackMetadataRecord, artist) == 510, "");
static_assert(offsetof(TrackMetadataRecord, genre) == 765, "");
static_assert(offsetof(TrackMetadataRecord, composer) == 1020, "");
static_assert(sizeof(BatteryState) == 2, "");
static_assert(offsetof(BatteryState, level) == 0, "");
static_assert(offsetof(BatteryState, powerState) == 1, "");
static_assert(sizeof(IpodInfo) == 768, "");
static_assert(offsetof(IpodInfo, name) == 0, "");
static_assert(offsetof(IpodInfo, major) == 255, "");
static_assert(offsetof(IpodInfo, minor) == 256, "");
static_assert(offsetof(IpodInfo, revision) == 257, "");
static_assert(offsetof(IpodInfo, serial) == 258, "");
static_assert(offsetof(IpodInfo, model) == 513, "");

#endif
