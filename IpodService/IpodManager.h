// The one object that talks to the device-manager library.
#pragma once

#include <pthread.h>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/BrowseLevel.h"
#include "IpodService/DeviceCall.h"
#include "IpodService/IIpodNotifications.h"
#include "IpodService/Outcome.h"

class DeviceEventView;
class GstreamerStreamer;

enum class ConnectionState : u32 {
    Unregistered = 0,
    Registered = 1,
    Connected = 2,
    BuildingDatabase = 3,
    DatabaseComplete = 4,
    BrowseReady = 5
};

/// Where closing a device looks for files to delete. Tests name folders of their own.
struct DeviceFolders {
    std::string database = "/home/root/iap2db";
    std::string playlists = "/";
};

/// One category that the top level may offer.
struct TopCategoryEntry {
    u32 index = 0;
    u32 category = 0;
    u32 supported = 0;  ///< 0 or 1
};

/// The session with the device manager: registration, the open device, browsing, playback, artwork and the
/// audio stream. Every operation runs on the server thread unless it says otherwise. Operations that wrap one
/// call of the device manager answer 0 for success and 1 minus the result code for a failure, which they log.
/// No lock is held across a device-manager call.
class IpodManager {
  public:
    /// `notifications` is not owned and outlives the manager. Main thread.
    explicit IpodManager(IIpodNotifications* notifications, DeviceFolders folders = {});
    /// Returns once no event of this manager is being handled any more. Main thread, server thread gone.
    ~IpodManager();
    IpodManager(const IpodManager&) = delete;
    IpodManager& operator=(const IpodManager&) = delete;

    // Session (IpodManagerSession.cpp)

    i32 RegisterProcess();
    i32 AllocateShm1();
    i32 AllocateShm2();
    i32 FreeShm1();
    i32 FreeShm2();
    i32 Shutdown();
    /// True: the unit's authentication coprocessor needs no reset of ours.
    bool ResetAuthCoprocessor() { return true; }
    /// Makes the server loop end after its pass. Any thread.
    void RequestExit() { m_exitRequested = true; }
    /// Any thread.
    bool IsExitRequested() const { return m_exitRequested; }

    // Devices and the life of a connection (IpodManagerDevices.cpp, IpodManagerConnection.cpp)

    u32 GetNumDevices();
    /// The devices attached, owned by the manager until the next listing; null when there are none.
    const DeviceRecord* GetDeviceList();
    /// 0 when the device was taken, and also when there was nothing to take.
    i32 OpenDevice(u32 handle);
    i32 CloseDevice();
    /// Any thread.
    bool IsDeviceConnected() const { return m_deviceHandle != 0; }
    /// One step of the connection's state machine, once a pass.
    void UpdateConnection();
    /// Closes the device that an event has reported gone, once a pass.
    void ProcessDelayedClose();
    /// Any thread.
    ConnectionState State() const { return m_connectionState; }

    // Browse session and model (IpodManagerBrowse.cpp)

    i32 OpenBrowseSession();
    i32 ResetDatabase();
    i32 CloseBrowseSession();
    /// Mask of the categories that may follow `category`, or 1 minus the code.
    u32 GetSupportedCategories(u32 category);
    std::vector<TopCategoryEntry> GetTopCategories();
    /// 0, or -1 on failure.
    i32 BrowseTopCategory(u32 category);
    /// Counts the items of `child` below `parent` (null: the whole library) and makes it that level's child.
    i32 GetSubCategoryItems(BrowseLevel* parent, BrowseLevel* child);
    /// `count` items from `start`, circularly; `count` becomes the number of entries in the array, which the
    /// caller owns. A count beyond the level's total gives the whole level from its first item. Null when
    /// there is nothing to give or no memory.
    BrowseItemArray GetItems(const BrowseLevel* parent, const BrowseLevel& level, i32 start, i32& count);
    i32 SelectItem(BrowseLevel& level, u32 index);
    /// 0 when a level was entered, 1 when the item was a leaf and browsing has ended, -1 on failure.
    i32 BrowseInto(u32 index);
    bool IsAtLeafCategory();
    /// 1 on an empty stack.
    i32 BrowseOneLevelBack();
    i32 DeviceOneLevelBack();
    /// 0, or -1 when there is no level.
    i32 SetItemFilter(const std::string& text);
    /// The entered level, or null at the root.
    BrowseLevel* CurrentBrowseLevel();
    static bool HasFilter(const BrowseLevel& level) { return !level.filter.empty(); }
    /// Stores the whole level's items and clears its filter.
    static void SetLevelItems(BrowseLevel& level, BrowseItemArray items, i32 count);
    /// Fetches and stores the whole of `level` unless that has been done.
    void FetchLevelItems(BrowseLevel& level);

    // Playback (IpodManagerPlayback.cpp)

    u32 GetPlayStatus();
    bool IsPlaying();
    bool IsPaused();
    bool IsStopped();
    bool TogglePlayPause();
    i32 Play();
    i32 Pause();
    i32 Stop();
    i32 TrackFastForward(bool start);
    i32 TrackRewind(bool start);
    i32 NextTrack();
    i32 PreviousTrack();
    i32 PlayFirstTrack();
    bool GetHasPlayableData();

    // What is playing (IpodManagerNowPlaying.cpp)

    TrackTimes GetTrackTime();
    TrackMetadata GetTrackMetadata();
    NowPlayingPosition GetNowPlayingIndex();
    i32 GetNowPlayingList();
    i32 SelectNowPlayingIndex(u32 index);
    /// Asks for a track-info notification on the next pass. Any thread.
    void RequestPlayStatus() { m_playStatusPending = true; }
    /// Sends the track info when an event or a client has asked for it, once a pass.
    void UpdatePlayStatus();
    void UpdateTrackTime();

    // Settings of the device (IpodManagerSettings.cpp)

    /// The mode, or 1 minus the code on failure: the two cannot be told apart.
    i32 GetShuffle();
    i32 SetShuffle(u32 mode);
    i32 GetRepeat();
    i32 SetRepeat(u32 mode);
    i32 GetVolume();
    i32 SetVolume(i32 level);
    i32 GetNowPlayingAppName();
    i32 GetBatteryPowerState();
    i32 SetInternalBatteryChargeState(i32 allow);
    i32 SetMaxCurrent(i32 milliamps);
    void LogDeviceInfo();

    // Album art (IpodManagerAlbumArt.cpp)

    /// Fetches the picture now. 0 on success, also when there is no picture, which leaves the arguments
    /// alone; the device manager's own code on failure. Throws vips::VError for a picture that cannot be
    /// shrunk.
    i32 GetPlayingTrackAlbumArt(std::string& text, u32& width, u32& height);
    /// 0, or -1 with no device open.
    i32 RequestDelayedAlbumArt();
    void ProcessDelayedAlbumArt();

    // Audio stream (IpodManagerStream.cpp)

    /// 1 started, 0 a stream exists already.
    i32 StartStream();
    /// 1 stopped, 0 there was none.
    i32 StopStream();
    /// 1 restarted, 0 there was none to restart. `sampleRate` in Hz; 0 or less leaves it to the elements.
    /// Server thread and callback thread.
    i32 RestartStream(i32 sampleRate);
    void ProcessDelayedStreamRestart();

    // Events (IpodManagerEvents.cpp)

    /// Handles one event. Callback thread.
    void OnDeviceManagerEvent(const DeviceEvent& event);
    /// Any thread.
    u32 ProcessHandle() const { return m_processHandle; }

  private:
    struct AlbumArtResult;

    /// Calls a function that takes the process handle first.
    template <typename Function, typename... Arguments>
    u32 OnProcess(const DeviceCall& call, Function function, Arguments&&... arguments) const {
        return call(function, m_processHandle.load(), std::forward<Arguments>(arguments)...);
    }
    /// Calls a function that takes the process handle and the open device's handle first.
    template <typename Function, typename... Arguments>
    u32 OnDevice(const DeviceCall& call, Function function, Arguments&&... arguments) const {
        return call(function, m_processHandle.load(), m_deviceHandle.load(),
                    std::forward<Arguments>(arguments)...);
    }

    void PrepareDatabaseFolder() const;
    i32 FreeBlock(std::unique_ptr<u32>& cell, const char* goneText);
    static void LogDevice(const DeviceRecord& device);
    const DeviceRecord* FindDevice(u32 handle) const;
    i32 StartBuildingDatabase(u32 handle);
    void FindAndOpenDevice();
    void SetUpCharging();
    void OpenSessionOrRecover(const char* stateText);
    void ClearPlaylistFiles() const;
    void ClearDatabaseFiles() const;

    void EmptyBrowseStack();
    u32 ReduceChildCategory(u32 category);
    u32 FetchItems(const BrowseLevel* parent, const BrowseLevel& level, u32 start, u32 count,
                   BrowseItem* into);

    i32 FastForwardRewind(bool start, u32 direction);
    i32 ReadMode(DeviceCall call, u32 (*function)(u32, u32, u32*)) const;
    bool PlayStatusIsDue();

    AlbumArtResult ReadAlbumArt();

    // True when the event was one of theirs.
    bool HandlePlaybackEvent(const DeviceEventView& event);
    static bool LogDeviceEvent(const DeviceEventView& event);
    void HandleDisconnected(const DeviceEventView& event);
    void HandlePlayContext(const DeviceEventView& event);
    void HandleDatabaseProgress(const DeviceEventView& event);

    IIpodNotifications* const m_notifications;
    const DeviceFolders m_folders;

    // Written by the server thread, read by the callback thread.
    std::atomic<u32> m_processHandle{0};
    std::atomic<u32> m_deviceHandle{0};  ///< 0: no device is open

    // Server thread only.
    u32 m_numDevices = 0;
    std::unique_ptr<DeviceRecord[], FreeDeleter> m_deviceList;
    u32 m_listedDevices = 0;  ///< records that m_deviceList has room for
    u32 m_shm1Size = 0;       ///< what was asked for; the device manager may write back what it granted
    u32 m_shm2Size = 0;
    u32 m_shm1Granted = 0;        ///< bytes of block 1 that may be read; 0 while it is not held
    std::unique_ptr<u32> m_shm1;  ///< the block's address; stays with the value 0 after a failed allocation
    std::unique_ptr<u32> m_shm2;
    std::array<char, 256> m_deviceName{};  ///< of the last device listed
    std::vector<std::unique_ptr<BrowseLevel>> m_browseStack;

    /// Wall-clock milliseconds in 32 bits, 0 for none. Set by the callback thread, cleared by the server
    /// thread.
    std::atomic<u32> m_playStatusDeadlineMs{0};

    /// One stream operation at a time, whichever thread it comes from. Never held across a device-manager
    /// call or a notification.
    std::mutex m_streamMutex;
    std::unique_ptr<GstreamerStreamer> m_streamer;  ///< guarded by m_streamMutex

    /// Locked by no operation: browsing runs on the server thread alone.
    pthread_mutex_t m_browseMutex;

    std::atomic<ConnectionState> m_connectionState{ConnectionState::Unregistered};

    // Set from any thread, cleared by the server thread before it acts, so that an event in between asks
    // again.
    std::atomic<bool> m_exitRequested{false};
    std::atomic<bool> m_streamRestartPending{false};
    std::atomic<bool> m_playStatusPending{false};
    std::atomic<bool> m_trackTimePending{false};
    std::atomic<bool> m_closePending{false};
    std::atomic<bool> m_albumArtPending{false};
};
