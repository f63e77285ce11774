// The session with the device manager, operation by operation.
#pragma once

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/AudioStream.h"
#include "IpodService/BrowseStack.h"
#include "IpodService/ConnectionState.h"
#include "IpodService/DeviceFolders.h"
#include "IpodService/DeviceLink.h"
#include "IpodService/DeviceList.h"
#include "IpodService/EventHandler.h"
#include "IpodService/IIpodNotifications.h"
#include "IpodService/PendingWork.h"
#include "IpodService/PictureLoader.h"
#include "IpodService/SharedBlock.h"

/// Registration, the open device, browsing, playback, artwork and the audio stream. Operations that wrap one
/// call of the device manager answer 0 for success and 1 minus the result code for a failure, which is
/// logged. The server thread's own, but for what says otherwise.
class IpodManager {
  public:
    /// `notifications` is not owned and outlives the manager. `wake` is called, on whatever thread, when
    /// there is work for the server loop. `pictureModule`: where the module that shrinks pictures lies. Main
    /// thread.
    explicit IpodManager(IIpodNotifications* notifications, DeviceFolders folders = {},
                         std::function<void()> wake = {}, std::string pictureModule = {});
    /// Returns once no event is being handled any more; stops the stream. Main thread, server thread gone.
    ~IpodManager();
    IpodManager(const IpodManager&) = delete;
    IpodManager& operator=(const IpodManager&) = delete;

    // Any thread

    /// Makes the server loop end after its pass. True for the first request.
    bool RequestExit() { return m_pending.RequestExit(); }
    bool IsExitRequested() const { return m_pending.IsExitRequested(); }
    /// Asks for a track-info notification on the next pass.
    void RequestPlayStatus() { m_pending.RequestPlayStatus(); }
    bool IsDeviceConnected() const { return m_link.Handles().IsDeviceOpen(); }
    ConnectionState State() const { return m_connectionState; }
    u32 ProcessHandle() const { return m_link.Handles().Process(); }

    // Steps of the server loop, once a pass in this order

    /// One step of the connection's state machine.
    void UpdateConnection() REQUIRES(kServerThread);
    void ProcessDelayedStreamRestart() REQUIRES(kServerThread);
    void ProcessDelayedAlbumArt() REQUIRES(kServerThread);
    /// Sends the track info when an event or a client has asked for it.
    void UpdatePlayStatus() REQUIRES(kServerThread);
    void UpdateTrackTime() REQUIRES(kServerThread);
    /// Closes the device that an event has reported gone.
    void ProcessDelayedClose() REQUIRES(kServerThread);

    /// How long the loop may sleep before a step has something to do that nobody wakes it for.
    std::chrono::milliseconds TimeToNextStep() const REQUIRES(kServerThread);

    // Session (IpodManager.cpp). Nothing in the service calls AllocateShm2.

    i32 RegisterProcess() REQUIRES(kServerThread);
    i32 AllocateShm1() REQUIRES(kServerThread) { return m_shm1.Allocate(m_link); }
    i32 AllocateShm2() REQUIRES(kServerThread) { return m_shm2.Allocate(m_link); }
    i32 FreeShm1() REQUIRES(kServerThread) { return m_shm1.Free(m_link); }
    i32 FreeShm2() REQUIRES(kServerThread) { return m_shm2.Free(m_link); }
    i32 Shutdown() REQUIRES(kServerThread);
    /// True: the unit's authentication coprocessor needs no reset of ours.
    static bool ResetAuthCoprocessor() { return true; }

    // Devices (IpodManagerDevices.cpp)

    u32 GetNumDevices() REQUIRES(kServerThread) { return DeviceList::Count(m_link); }
    /// 0 when the device was taken, and also when there was nothing to take.
    i32 OpenDevice(u32 handle) REQUIRES(kServerThread);
    i32 CloseDevice() REQUIRES(kServerThread);

    // Browsing (IpodManagerBrowse.cpp); what is not told here is told in BrowseStack

    i32 OpenBrowseSession() REQUIRES(kServerThread);
    i32 ResetDatabase() REQUIRES(kServerThread) { return m_browseStack.ResetDatabase(); }
    i32 CloseBrowseSession() REQUIRES(kServerThread) { return m_browseStack.CloseSession(); }
    bool IsBrowsing() const REQUIRES(kServerThread) { return m_browseStack.IsBrowsing(); }
    bool IsAtLeafCategory() const REQUIRES(kServerThread) { return m_browseStack.IsAtLeafCategory(); }
    std::vector<TopCategoryEntry> GetTopCategories() const REQUIRES(kServerThread) {
        return m_browseStack.GetTopCategories();
    }
    /// Opens a category of the top level, leaving another that is open. 0, or -1 on failure.
    i32 BrowseTopCategory(u32 category) REQUIRES(kServerThread);
    i32 BrowseInto(u32 index) REQUIRES(kServerThread) { return m_browseStack.BrowseInto(index); }
    i32 BrowseOneLevelBack() REQUIRES(kServerThread) { return m_browseStack.BrowseOneLevelBack(); }
    u32 ListItems(i32 start, i32 count, const BrowseItemVisitor& visit) const REQUIRES(kServerThread) {
        return m_browseStack.ListItems(start, count, visit);
    }
    bool ListAllItems(const BrowseItemVisitor& visit) REQUIRES(kServerThread) {
        return m_browseStack.ListAllItems(visit);
    }
    i32 SetItemFilter(const std::string& text) REQUIRES(kServerThread) {
        return m_browseStack.SetItemFilter(text);
    }
    i32 Jump(JumpFunction find, i32 start) const REQUIRES(kServerThread) {
        return m_browseStack.Jump(find, start);
    }

    // Playback (IpodManagerPlayback.cpp). Nothing in the service calls Stop.

    u32 GetPlayStatus() REQUIRES(kServerThread);
    bool IsPlaying() REQUIRES(kServerThread);
    bool IsPaused() REQUIRES(kServerThread);
    bool IsStopped() REQUIRES(kServerThread);
    bool TogglePlayPause() REQUIRES(kServerThread);
    i32 Play() REQUIRES(kServerThread);
    i32 Pause() REQUIRES(kServerThread);
    i32 Stop() REQUIRES(kServerThread);
    i32 TrackFastForward(bool start) REQUIRES(kServerThread);
    i32 TrackRewind(bool start) REQUIRES(kServerThread);
    i32 NextTrack() REQUIRES(kServerThread);
    i32 PreviousTrack() REQUIRES(kServerThread);
    i32 PlayFirstTrack() REQUIRES(kServerThread);
    bool GetHasPlayableData() REQUIRES(kServerThread);

    // What is playing (IpodManagerNowPlaying.cpp). Nothing in the service calls GetNowPlayingList and
    // SelectNowPlayingIndex.

    TrackTimes GetTrackTime() REQUIRES(kServerThread);
    TrackMetadata GetTrackMetadata() REQUIRES(kServerThread);
    NowPlayingPosition GetNowPlayingIndex() REQUIRES(kServerThread);
    i32 GetNowPlayingList() REQUIRES(kServerThread);
    i32 SelectNowPlayingIndex(u32 index) REQUIRES(kServerThread);

    // Settings of the device (IpodManagerSettings.cpp). Nothing in the service calls the volume's, the
    // application's and the battery's, nor LogDeviceInfo.

    /// The mode, or 1 minus the code on failure: the two cannot be told apart.
    i32 GetShuffle() REQUIRES(kServerThread);
    i32 SetShuffle(u32 mode) REQUIRES(kServerThread);
    i32 GetRepeat() REQUIRES(kServerThread);
    i32 SetRepeat(u32 mode) REQUIRES(kServerThread);
    i32 GetVolume() REQUIRES(kServerThread);
    i32 SetVolume(i32 level) REQUIRES(kServerThread);
    i32 GetNowPlayingAppName() REQUIRES(kServerThread);
    i32 GetBatteryPowerState() REQUIRES(kServerThread);
    i32 SetInternalBatteryChargeState(i32 allow) REQUIRES(kServerThread);
    i32 SetMaxCurrent(i32 milliamps) REQUIRES(kServerThread);
    void LogDeviceInfo() REQUIRES(kServerThread);

    // Album art (IpodManagerAlbumArt.cpp)

    /// Fetches the picture now, and writes it behind `text` as base64. 0 on success, also when there is no
    /// picture, which leaves the arguments alone; the device manager's own code on failure. Throws
    /// PictureError for a picture that cannot be shrunk.
    i32 GetPlayingTrackAlbumArt(std::string& text, u32& width, u32& height) REQUIRES(kServerThread);
    /// 0, or -1 with no device open.
    i32 RequestDelayedAlbumArt() REQUIRES(kServerThread);

    // Audio stream

    /// 1 started, 0 a stream exists already. Any thread.
    i32 StartStream() { return m_streamer.Start(); }
    /// 1 stopped, 0 there was none. Any thread.
    i32 StopStream() { return m_streamer.Stop(); }
    /// 1 restarted, 0 there was none. Any thread.
    i32 RestartStream(i32 sampleRate) { return m_streamer.Restart(sampleRate); }

  private:
    struct AlbumArtResult;
    struct TrackCount {
        u32 code;
        i32 count;
    };

    void FindAndOpenDevice() REQUIRES(kServerThread);
    void SetUpCharging() REQUIRES(kServerThread);
    i32 StartBuildingDatabase() REQUIRES(kServerThread);
    void OpenSessionOrRecover(const char* stateText) REQUIRES(kServerThread);
    TrackCount CountAllTracks() REQUIRES(kServerThread);
    i32 FastForwardRewind(bool start, u32 direction) REQUIRES(kServerThread);
    template <typename Function>
    i32 ReadMode(const DeviceCall<Function>& call) const REQUIRES(kServerThread);
    AlbumArtResult ReadAlbumArt() REQUIRES(kServerThread);

    IIpodNotifications* const m_notifications;
    const DeviceFolders m_folders;

    PendingWork m_pending;
    DeviceLink m_link{m_pending};
    std::atomic<ConnectionState> m_connectionState{ConnectionState::Unregistered};
    AudioStream m_streamer;

    // The server thread's own
    DeviceList m_deviceList;
    SharedBlock m_shm1{1};
    SharedBlock m_shm2{2};
    BrowseStack m_browseStack{m_link};
    PictureLoader m_pictures;

    /// Locked by no operation: browsing runs on the server thread alone.
    pthread_mutex_t m_browseMutex;

    /// Declared last: it takes events until all else is still there.
    EventHandler m_eventHandler{m_pending, m_link.Handles(), m_connectionState, m_streamer, *m_notifications};
};
