// A device manager that answers at once, so that what is measured over it is the service's own. One player,
// or none with QUICK_PLAYER=none. With QUICK_PLAYER_EVENTS=<microseconds> it reports a new track at that
// interval; the time that it then tells as elapsed is when it did so, in microseconds of the monotonic clock.
//
// Pause and play report the event before they return, so that it costs no switch of threads that the service
// could not avoid; with QUICK_PLAYER_THREAD=own a thread of the library's reports it, as a real one's does.
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#pragma GCC visibility push(default)
#include "DeviceManager/DeviceManager.h"
#pragma GCC visibility pop

namespace {

#ifdef MAP_32BIT
constexpr int kBelow4GiB = MAP_32BIT;
#else
constexpr int kBelow4GiB = 0;  // a 32-bit machine's memory lies there
#endif

constexpr u32 kProcess = 1;
constexpr u32 kDevice = 7;
constexpr u32 kSongs = 100000;
constexpr u32 kArtHeight = 320;
constexpr u32 kArtWidth = 3276;  // with two bytes a pixel almost the whole block

std::atomic<u32> g_reported{0};
std::atomic<bool> g_ended{false};
std::atomic<bool> g_isPaused{false};
std::thread g_events;
DeviceEventCallback g_callback = nullptr;

/// Calls the callback with what was posted, in order.
class Reporter {
  public:
    Reporter() : m_thread([this] { Run(); }) {}
    ~Reporter() {
        Post(DEV_MGR_EVENT_NONE);
        m_thread.join();
    }
    Reporter(const Reporter&) = delete;
    Reporter& operator=(const Reporter&) = delete;

    void Post(u32 id) {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(id);
        m_changed.notify_one();
    }

  private:
    std::vector<u32> Take() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_posted.empty(); });
        return std::exchange(m_posted, {});
    }
    void Run() {
        for (;;) {
            for (const u32 id : Take()) {
                if (id == DEV_MGR_EVENT_NONE) {
                    return;
                }
                DeviceEvent event{};
                event.words[0] = id;
                g_callback(&event, kProcess);
            }
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<u32> m_posted;
    std::thread m_thread;  // last: it uses the others
};

std::unique_ptr<Reporter> g_reporter;  // none: from inside the call

bool IsSetTo(const char* variable, const char* value) {
    const char* text = std::getenv(variable);
    return text != nullptr && std::strcmp(text, value) == 0;
}

void Report(u32 id) {
    if (g_reporter != nullptr) {
        g_reporter->Post(id);
        return;
    }
    DeviceEvent event{};
    event.words[0] = id;
    g_callback(&event, kProcess);
}

/// What has the state already has no event.
void SetPaused(bool isPaused) {
    if (g_isPaused.exchange(isPaused) != isPaused) {
        Report(isPaused ? DEV_MGR_EVENT_PLAY_PAUSED : DEV_MGR_EVENT_PLAY_STARTED);
    }
}

u32 NowMicroseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<u32>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
}

u32 OnDevice(u32 dh) {
    return dh == kDevice ? DEV_MGR_SUCCESS : DEV_MGR_INVALID_DEVICE_HANDLE;
}

/// "Alantern over the river 012345": 30,000 names begin with each of the first letters. By hand, since what
/// the library takes is no part of what is measured over it.
void WriteName(char* name, u32 song) {
    constexpr char kPattern[] = "?lantern over the river 000000";
    constexpr u32 kSongsALetter = 30000;
    std::memcpy(name, kPattern, sizeof kPattern);
    name[0] = static_cast<char>('A' + song / kSongsALetter);
    for (std::size_t digit = sizeof kPattern - 2; song > 0; song /= 10) {
        name[digit--] = static_cast<char>('0' + song % 10);
    }
}

void SendEvents(std::chrono::microseconds interval) {
    while (!g_ended) {
        std::this_thread::sleep_for(interval);
        DeviceEvent event{};
        event.words[0] = DEV_MGR_EVENT_PLAY_TRACK_CHANGED;
        g_reported = NowMicroseconds();
        g_callback(&event, kProcess);
    }
}

}  // namespace

u32 eDevMgrRegisterProcess(u32* ph, DeviceEventCallback callback) {
    *ph = kProcess;
    g_callback = callback;
    if (IsSetTo("QUICK_PLAYER_THREAD", "own")) {
        g_reporter = std::make_unique<Reporter>();
    }
    if (const char* interval = std::getenv("QUICK_PLAYER_EVENTS")) {
        g_events = std::thread(SendEvents, std::chrono::microseconds(std::atoi(interval)));
    }
    return DEV_MGR_SUCCESS;
}
u32 eDevMgrDeRegisterProcess(u32) {
    g_ended = true;
    if (g_events.joinable()) {
        g_events.join();
    }
    g_reporter.reset();
    return DEV_MGR_SUCCESS;
}
u32 eDevMgrAllocateSharedMemory(u32, u32* size, u32* block) {
    constexpr int kFlags = MAP_PRIVATE | MAP_ANONYMOUS | kBelow4GiB;
    void* memory = mmap(nullptr, *size, PROT_READ | PROT_WRITE, kFlags, -1, 0);
    *block = static_cast<u32>(reinterpret_cast<uintptr_t>(memory));
    return memory == MAP_FAILED ? DEV_MGR_MEMORY_ERROR : DEV_MGR_SUCCESS;
}
u32 eDevMgrDeAllocateSharedMemory(u32, u32) {
    return DEV_MGR_SUCCESS;
}
u32 eDevMgrGetNumDevices(u32, u32* count) {
    *count = IsSetTo("QUICK_PLAYER", "none") ? 0 : 1;
    return DEV_MGR_SUCCESS;
}
u32 eDevMgrGetDeviceList(u32, DeviceRecord* list, u32, u32* count) {
    *count = 1;
    list[0].handle = kDevice;
    list[0].type = DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
    return DEV_MGR_SUCCESS;
}
u32 eDevMgrOpenDevice(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgrCloseDevice(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgrGetiPodInfo(u32, u32 dh, IpodInfo*) {
    return OnDevice(dh);
}
u32 eDevMgriPodSetMaxCurrent(u32, u32 dh, u16) {
    return OnDevice(dh);
}
u32 eDevMgriPodSetInternalBatteryChargeState(u32, u32 dh, u8) {
    return OnDevice(dh);
}
u32 eDevMgriPodGetBatteryPowerState(u32, u32 dh, BatteryState*) {
    return OnDevice(dh);
}
u32 eDevmgriPodGetVolume(u32, u32 dh, u8*, u8*) {
    return OnDevice(dh);
}
u32 eDevmgriPodSetVolume(u32, u32 dh, u8, u8) {
    return OnDevice(dh);
}
u32 eDevMgriPodGetNowPlayingAppname(u32, u32 dh, char** name) {
    *name = nullptr;
    return OnDevice(dh);
}
u32 eDevMgriPodStartBuildingDatabase(u32, u32 dh, char*) {
    return OnDevice(dh);
}
u32 eDevMgriPodOpenMdBrowseSession(u32, u32 dh, u32) {
    return OnDevice(dh);
}
u32 eDevMgriPodResetDatabase(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgriPodCloseMdBrowseSession(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgriPodBrowseOneLevelBack(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgriPodMdGetCategories(u32, u32 dh, u32, u32* mask) {
    *mask = DEV_MGR_CATEGORY_TRACK;
    return OnDevice(dh);
}
u32 eDevMgriPodGetNumItems(u32, u32 dh, i32, u32, u32, u32* count) {
    *count = kSongs;
    return OnDevice(dh);
}
u32 eDevMgriPodGetItems(u32, u32 dh, i32, u32, u32, u32 start, u32* count, BrowseItem* items) {
    *count = std::min(*count, kSongs - std::min(start, kSongs));
    for (u32 i = 0; i < *count; ++i) {
        WriteName(items[i].name, start + i);
        items[i].id = start + i;
    }
    return OnDevice(dh);
}
u32 eDevMgriPodSelectCategorizedIndex(u32, u32 dh, u32, u32) {
    return OnDevice(dh);
}
u32 eDevMgriPodPlay(u32, u32 dh) {
    SetPaused(false);
    return OnDevice(dh);
}
u32 eDevMgriPodPause(u32, u32 dh) {
    SetPaused(true);
    return OnDevice(dh);
}
u32 eDevMgriPodStop(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgriPodFastForwardRewindStart(u32, u32 dh, u32) {
    return OnDevice(dh);
}
u32 eDevMgriPodFastForwardRewindStop(u32, u32 dh) {
    return OnDevice(dh);
}
u32 eDevMgriPodPlayNextPreviousTrack(u32, u32 dh, u32) {
    return OnDevice(dh);
}
u32 eDevMgriPodGetPlayStatus(u32, u32 dh, u32* status) {
    *status = g_isPaused ? E_DEVMGR_IPOD_PLAY_PAUSED : E_DEVMGR_IPOD_PLAY_PLAYING;
    return OnDevice(dh);
}
u32 eDevMgriPodGetPlayingTrackElapsedAndTotaltime(u32, u32 dh, u32* elapsed, u32* total) {
    *elapsed = g_reported;
    *total = 0;
    return OnDevice(dh);
}
u32 eDevMgriPodGetPlayingTrackMetaData(u32, u32 dh, TrackMetadataRecord* record) {
    std::strcpy(record->title, "Song");
    return OnDevice(dh);
}
u32 eDevMgriPodGetPlayingTrackAlbumArt(u32, u32 dh, u32* height, u32* width, u32) {
    *height = kArtHeight;
    *width = kArtWidth;
    return OnDevice(dh);
}
u32 eDevMgriPodGetNumPlayingTracks(u32, u32 dh, u32* count, u32* index) {
    *count = kSongs;
    *index = 0;
    return OnDevice(dh);
}
u32 eDevMgriPodGetPlayingList(u32, u32 dh, u32, u32* count, BrowseItem*) {
    *count = 0;
    return OnDevice(dh);
}
u32 eSelectNowPlayingIndex(u32, u32 dh, u32) {
    return OnDevice(dh);
}
u32 eDevMgriPodGetShuffleSetting(u32, u32 dh, u32* mode) {
    *mode = E_DEVMGR_IPOD_SHUFFLE_NONE;
    return OnDevice(dh);
}
u32 eDevMgriPodSetShuffleSetting(u32, u32 dh, u32) {
    return OnDevice(dh);
}
u32 eDevMgriPodGetRepeatSetting(u32, u32 dh, u32* mode) {
    *mode = E_DEVMGR_IPOD_REPEAT_NONE;
    return OnDevice(dh);
}
u32 eDevMgriPodSetRepeatSetting(u32, u32 dh, u32) {
    return OnDevice(dh);
}
