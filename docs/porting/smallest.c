// The smallest device manager that plays: one player with three tracks, plugged in from the start. It has a clock
// and events, and neither pictures nor settings. ../porting.md goes through it.
#define _GNU_SOURCE
#include <pthread.h>
#include <string.h>
#include <time.h>

#include "DeviceManager/DeviceManager.h"

enum { PROCESS = 1, PLAYER = 7, TRACKS = 3, TRACK_MS = 60000, SAMPLE_RATE = 44100, ROOM = 64 };
static const char* const titles[TRACKS] = {"One", "Two", "Three"};

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;  // guards all below; never held during a callback
static pthread_cond_t changed = PTHREAD_COND_INITIALIZER;
static pthread_t thread;
static DeviceEventCallback callback;         // NULL: nobody is registered
static u32 events[ROOM][2], told, happened;  // id and first word; how many of them, ever
static u32 isOpen, isBrowsing, isRateTold, state = E_DEVMGR_IPOD_PLAY_STOPPED, position, elapsed;

static void Happen(u32 event, u32 word) {
    if (happened - told == ROOM) return;
    events[happened % ROOM][0] = event;
    events[happened++ % ROOM][1] = word;
    pthread_cond_signal(&changed);
}
static void Begin(u32 track) {
    position = track, elapsed = 0;
    Happen(DEV_MGR_EVENT_PLAY_TRACK_CHANGED, 0);
    if (!isRateTold++) Happen(DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, SAMPLE_RATE);
}
static void Become(u32 newState, u32 event) {
    if (state != newState) Happen(event, 0);
    state = newState;
}
static void PassSecond(void) {
    if (state != E_DEVMGR_IPOD_PLAY_PLAYING) return;
    elapsed += 1000;
    if (elapsed < TRACK_MS) Happen(DEV_MGR_EVENT_PLAY_TIME, elapsed);
    else if (position + 1 < TRACKS) Begin(position + 1);
    else Become(E_DEVMGR_IPOD_PLAY_STOPPED, DEV_MGR_EVENT_PLAY_STOPPED);
}
static void* Run(void* unused) {
    struct timespec second;
    clock_gettime(CLOCK_REALTIME, &second);
    second.tv_sec++;
    pthread_mutex_lock(&lock);
    while (callback) {
        if (told == happened) {
            if (pthread_cond_timedwait(&changed, &lock, &second) != 0) second.tv_sec++, PassSecond();
            continue;
        }
        DeviceEvent event = {.words = {events[told % ROOM][0], events[told % ROOM][1]}};
        if (event.words[0] == DEV_MGR_EVENT_DEVICE_CONNECTED) event.words[2] = PLAYER;
        told++;
        const DeviceEventCallback tell = callback;
        pthread_mutex_unlock(&lock);
        tell(&event, PROCESS);
        pthread_mutex_lock(&lock);
    }
    pthread_mutex_unlock(&lock);
    return NULL;
}

enum Needs { REGISTRATION, DEVICE, OPEN_DEVICE, SESSION, MUSIC };
static u32 Enter(enum Needs needs, u32 ph, u32 dh) {  // and Leave, whatever the code
    pthread_mutex_lock(&lock);
    if (!callback || ph != PROCESS) return DEV_MGR_PROCESS_NOT_REGISTERED;
    if (needs >= DEVICE && dh != PLAYER) return DEV_MGR_INVALID_DEVICE_HANDLE;
    if (needs >= OPEN_DEVICE && !isOpen) return DEV_MGR_DEVICE_NOT_OPENED;
    if (needs == SESSION && !isBrowsing) return DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED;
    return needs == MUSIC && state == E_DEVMGR_IPOD_PLAY_STOPPED ? DEV_MGR_IAP_IPOD_IN_STOP_STATE : DEV_MGR_SUCCESS;
}
static u32 Leave(u32 code) {
    pthread_mutex_unlock(&lock);
    return code;
}
// A function of a device: what it needs, itself, and what it does then; to fail, that sets `code`.
#define FUNCTION(needs, function, ...) u32 function { \
    u32 code = Enter(needs, ph, dh); if (code == DEV_MGR_SUCCESS) { __VA_ARGS__; } return Leave(code); }
#define NO(function) FUNCTION(OPEN_DEVICE, function, code = DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE)

u32 eDevMgrRegisterProcess(u32* ph, DeviceEventCallback tell) {
    pthread_mutex_lock(&lock);
    if (callback || !tell) return Leave(callback ? DEV_MGR_NO_MORE_PROCESS_ALLOWED : DEV_MGR_WRONG_PARAMS);
    if (pthread_create(&thread, NULL, Run, NULL) != 0) return Leave(DEV_MGR_PROCESS_REGISTRY_FAILED);
    callback = tell;
    *ph = PROCESS;
    Happen(DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_IAP_2WIRE);
    return Leave(DEV_MGR_SUCCESS);
}
u32 eDevMgrDeRegisterProcess(u32 ph) {  // afterwards no callback runs any more, unless this was called from one
    const u32 code = Enter(REGISTRATION, ph, 0);
    if (code != DEV_MGR_SUCCESS) return Leave(code);
    callback = NULL;
    told = happened;
    pthread_cond_signal(&changed);
    Leave(code);
    return pthread_equal(pthread_self(), thread) ? pthread_detach(thread) : pthread_join(thread, NULL), code;
}
u32 eDevMgrAllocateSharedMemory(u32 ph, u32* size, u32* block) { return DEV_MGR_MEMORY_ERROR; }  // no pictures
u32 eDevMgrDeAllocateSharedMemory(u32 ph, u32 block) { return DEV_MGR_WROG_SHARED_MEMORY; }
u32 eDevMgrGetNumDevices(u32 ph, u32* count) { *count = 1; return DEV_MGR_SUCCESS; }
u32 eDevMgrGetDeviceList(u32 ph, DeviceRecord* list, u32 reserved, u32* count) {
    *count = *count > 0;
    if (*count > 0) *list = (DeviceRecord){"Three tracks", .handle = PLAYER, .type = DEV_MGR_DEVICE_TYPE_IAP_2WIRE};
    return DEV_MGR_SUCCESS;
}
FUNCTION(DEVICE, eDevMgrOpenDevice(u32 ph, u32 dh), isOpen = 1)
FUNCTION(OPEN_DEVICE, eDevMgrCloseDevice(u32 ph, u32 dh), isOpen = isBrowsing = 0; state = E_DEVMGR_IPOD_PLAY_STOPPED)
FUNCTION(OPEN_DEVICE, eDevMgriPodOpenMdBrowseSession(u32 ph, u32 dh, u32 mode), isBrowsing = 1)
FUNCTION(SESSION, eDevMgriPodCloseMdBrowseSession(u32 ph, u32 dh), isBrowsing = 0)
FUNCTION(SESSION, eDevMgriPodResetDatabase(u32 ph, u32 dh), )
FUNCTION(SESSION, eDevMgriPodBrowseOneLevelBack(u32 ph, u32 dh), code = DEV_MGR_ALREADY_ON_TOP_LEVEL)
FUNCTION(SESSION, eDevMgriPodMdGetCategories(u32 ph, u32 dh, u32 category, u32* mask),
    *mask = category == DEV_MGR_CATEGORY_TOP_LEVEL ? DEV_MGR_CATEGORY_TRACK : 0)
FUNCTION(SESSION, eDevMgriPodGetNumItems(u32 ph, u32 dh, i32 parent, u32 index, u32 category, u32* count),
    *count = category == DEV_MGR_CATEGORY_TRACK ? TRACKS : 0)
FUNCTION(SESSION, eDevMgriPodGetItems(u32 ph, u32 dh, i32 parent, u32 index, u32 category, u32 start, u32* count,
                             BrowseItem* items),
    if (start >= TRACKS || *count > TRACKS - start) *count = start < TRACKS ? TRACKS - start : 0;
    for (u32 i = 0; i < *count; items[i].id = start + i, i++) strcpy(items[i].name, titles[start + i]))
FUNCTION(SESSION, eDevMgriPodSelectCategorizedIndex(u32 ph, u32 dh, u32 category, u32 index),
    if (category != DEV_MGR_CATEGORY_TRACK) code = DEV_MGR_INVALID_CATEGORY_SELECTION;
    else if (index >= TRACKS) code = DEV_MGR_IAP_INVALID_INDEX;
    else Begin(index), Become(E_DEVMGR_IPOD_PLAY_PLAYING, DEV_MGR_EVENT_PLAY_STARTED))
FUNCTION(OPEN_DEVICE, eDevMgriPodPlay(u32 ph, u32 dh), if (state == E_DEVMGR_IPOD_PLAY_STOPPED) Begin(0);
    Become(E_DEVMGR_IPOD_PLAY_PLAYING, DEV_MGR_EVENT_PLAY_STARTED))
FUNCTION(MUSIC, eDevMgriPodPause(u32 ph, u32 dh), Become(E_DEVMGR_IPOD_PLAY_PAUSED, DEV_MGR_EVENT_PLAY_PAUSED))
FUNCTION(MUSIC, eDevMgriPodPlayNextPreviousTrack(u32 ph, u32 dh, u32 direction),
    Begin((position + (direction == DEV_MGR_SKIP_PREVIOUS ? TRACKS - 1 : 1)) % TRACKS))
FUNCTION(OPEN_DEVICE, eDevMgriPodGetPlayStatus(u32 ph, u32 dh, u32* status), *status = state)
FUNCTION(MUSIC, eDevMgriPodGetPlayingTrackElapsedAndTotaltime(u32 ph, u32 dh, u32* played, u32* total),
    *played = elapsed; *total = TRACK_MS)
FUNCTION(MUSIC, eDevMgriPodGetPlayingTrackMetaData(u32 ph, u32 dh, TrackMetadataRecord* record),
    memset(record, 0, sizeof *record); strcpy(record->title, titles[position]); strcpy(record->album, "Numbers"))
FUNCTION(MUSIC, eDevMgriPodGetPlayingTrackAlbumArt(u32 ph, u32 dh, u32* height, u32* width, u32 block),
    code = DEV_MGR_IAP_ARTWORK_NOT_PRESENT_ERROR)
FUNCTION(OPEN_DEVICE, eDevMgriPodGetNumPlayingTracks(u32 ph, u32 dh, u32* count, u32* index),
    *count = state == E_DEVMGR_IPOD_PLAY_STOPPED ? 0 : TRACKS; *index = position)
FUNCTION(OPEN_DEVICE, eDevMgriPodGetShuffleSetting(u32 ph, u32 dh, u32* mode), *mode = E_DEVMGR_IPOD_SHUFFLE_NONE)
FUNCTION(OPEN_DEVICE, eDevMgriPodGetRepeatSetting(u32 ph, u32 dh, u32* mode), *mode = E_DEVMGR_IPOD_REPEAT_NONE)
NO(eDevMgriPodSetShuffleSetting(u32 ph, u32 dh, u32 mode)) NO(eDevMgriPodSetRepeatSetting(u32 ph, u32 dh, u32 mode))
NO(eDevMgriPodStartBuildingDatabase(u32 ph, u32 dh, char* path)) NO(eDevMgrGetiPodInfo(u32 ph, u32 dh, IpodInfo* info))
NO(eDevMgriPodSetInternalBatteryChargeState(u32 ph, u32 dh, u8 allow)) NO(eDevMgriPodStop(u32 ph, u32 dh))
NO(eDevMgriPodSetMaxCurrent(u32 ph, u32 dh, u16 m)) NO(eDevMgriPodGetBatteryPowerState(u32 ph, u32 dh, BatteryState* b))
NO(eDevmgriPodGetVolume(u32 ph, u32 dh, u8* mute, u8* at)) NO(eDevmgriPodSetVolume(u32 ph, u32 dh, u8 flag, u8 to))
NO(eDevMgriPodFastForwardRewindStart(u32 ph, u32 dh, u32 seek)) NO(eDevMgriPodFastForwardRewindStop(u32 ph, u32 dh))
NO(eDevMgriPodGetNowPlayingAppname(u32 ph, u32 dh, char** name)) NO(eSelectNowPlayingIndex(u32 ph, u32 dh, u32 index))
NO(eDevMgriPodGetPlayingList(u32 ph, u32 dh, u32 start, u32* count, BrowseItem* items))
