// What events log and change.

#include <cstring>
#include <thread>

#include "IpodService/EventHandler.h"
#include "tests/IpodService/ManagerFixture.h"
#include "tests/Support/Deadline.h"

namespace {

using testing::HasSubstr;

class EventsTest : public ManagerTest {
  protected:
    EventsTest() { EXPECT_TRUE(StepUntil(ConnectionState::Registered)); }
    std::string LogOf(std::initializer_list<u32> words, std::initializer_list<std::string_view> texts = {}) {
        TakeLog();
        Fire(words, texts);
        return TakeLog();
    }
};

TEST_F(EventsTest, EveryEventLogsItsOwnTexts) {
    const std::string connected = "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n";
    const std::string disconnected = "[INFO ] Event is DEV_MGR_EVENT_DEVICE_DISCONNECTED\n";
    const std::string application = "[INFO ] Application Support related event for device 3\n";
    struct {
        std::initializer_list<u32> words;
        std::string log;
        std::initializer_list<std::string_view> texts = {};
    } const cases[] = {
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_IAP2_2WIRE, 7, 0x12a8, 0x5ac},
         connected + "[INFO ] Device is iAP DEV_MGR_DEVICE_TYPE_IAP2_2WIRE\n[INFO ] Device name is: Phone\n"
                     "[INFO ] Product Id is 0x12a8\n[INFO ] Vendor Id is 0x5ac\n[INFO ] Device handle is 7\n"
                     "[INFO ] Device node is /dev/x\n[INFO ] Device Serial is S1\n",
         {"Phone", "/dev/x", "S1"}},
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL, 7, 1, 2, 5},
         connected + "[INFO ] Device name is: Mtp\n[INFO ] Name length is 5\n[INFO ] Product Id is 0x1\n"
                     "[INFO ] Vendor Id is 0x2\n[INFO ] Device handle is 7\n[INFO ] Device Node is node\n"
                     "[INFO ] Device Serial is S2\n",
         {"Mtp", "node", "S2"}},
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_NO_MEDIUM, 0, 1, 2, 9},
         connected + "[INFO ] MASS STORAGE DEVICE CONNECTED WITHOUT MEDIA.\n[INFO ] Device name is: Stick\n"
                     "[INFO ] Product Id is 0x1\n[INFO ] Vendor Id is 0x2\n[INFO ] Mount path is: /mnt\n"
                     "[INFO ] PLEASE INSERT MEDIA TO CONTINUE\n[INFO ] Probable Device handle is 9\n\n",
         {"Stick", "/mnt"}},
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_USB_FAT_32, 7},
         connected + "[INFO ] Mass storage device is connected. Type is DEV_MGR_DEVICE_TYPE_USB_FAT_32\n"
                     "[INFO ] Mount failed"},
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_UNKNOWN},
         connected + "[INFO ] USB device is connected. Yet unknown. Reading.\n[INFO ] Another Connected "
                     "event will be received if connected device is supported.\n"},
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_HUB, 0x10, 0x20},
         connected + "[INFO ] HUB is connected.\n[INFO ] PID of connected HUB is 0x10\n"
                     "[INFO ] VID of connected HUB is 0x20\n"},
        {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_UNSUPPORTED},
         connected + "[INFO ] Connected device is unsupported.\n"},
        {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_HUB, 0x10, 0x20},
         disconnected + "[INFO ] HUB is disconnected\n[INFO ] PID of disconnected HUB is 0x10\n"
                        "[INFO ] VID of disconnected HUB is 0x20\n"},
        {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_IAP2_2WIRE, 7, 1, 2, 6},
         disconnected +
             "[INFO ] Type of disconnected device is DEV_MGR_DEVICE_TYPE_IAP2_2WIRE\n"
             "Handle of disconnected device is 7\nProduct ID of disconnected device is 0x1\n"
             "Vendor ID of disconnected device is 0x2\nName of disconnected device is Phone\n"
             "[INFO ] Node of discoonected MTP/iAP device is node\n[INFO ] Serial of disconected device is "
             "S1\n[INFO ] if you are in FS browse, press \"x\" and come out as device is disconnected\n"
             "[INFO ] if you are in iPod Menu, press \"c\" to return to main menu\n\n",
         {"Phone", "node", "S1"}},
        {{DEV_MGR_EVENT_PLAY_STOPPED, 0, 0, 0, 0, 3},
         "[INFO ] Event is DEV_MGR_EVENT_PLAY_STOPPED\n"
         "[INFO ] Playback related event from device with device handle 3\n\n"},
        {{DEV_MGR_EVENT_AUTH_LOCKED, 0, 0, 0, 0, 3},
         "[INFO ] Event is DEV_MGR_EVENT_AUTH_LOCKED\n[INFO ] Authentication related event for device with "
         "device handle 3, Node = node\n\n[INFO ] Auth Locked\n",
         {"node"}},
        {{DEV_MGR_IPOD_APP_SESSION_OPENED, 0, 0, 12, 5, 3},
         application + "[INFO ] Session Opened:[sessionID] - 5\n"
                       "[INFO ] The protocol string:[????]\n"
                       "[INFO ] Received Data from iPod:[sessionID] : 5\n"
                       "[INFO ] Data length is                      : 12\n"
                       "[INFO ] The X coordinate is                 : 772\n"
                       "[INFO ] The Y coordinate is                 : 258\n",
         {"\x01\x02\x03\x04"}},
        {{DEV_MGR_IPOD_APP_SESSION_CLOSED, 0, 0, 0, 5, 3},
         application + "[INFO ] Session Closed:[sessionID] - 5\n[INFO ] The protocol string:[p]\n",
         {"p"}},
        {{DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME, 0, 0, 0, 0, 3},
         "[INFO ] NowPlayingApplicationBundleName event received from connected iPod device 3\n"
         "[INFO ] NowPlayingApplicationBundleName is com.x\n\n\n",
         {"com.x"}},
        {{DEV_MGR_IPOD_APP_SESSION_SPACE_AVAILABLE, 0, 0, 0, 5, 3},
         "[INFO ] SessionSpaceAvailable event received from connected iPod device 3\n"
         "[INFO ] Session space is now available for session ID 5\n\n\n"},
        {{DEV_MGR_IPOD_CHARGING_INFO, 0, 0, 0, 5, 3},
         "[INFO ] Charging Info Type 5\n[INFO ] Charging Info value3\n"},
        {{DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING, E_DEVMGR_IPOD_SHUFFLE_ALBUMS}, "[INFO ] Shuffle Setting 2\n"},
        {{DEV_MGR_EVENT_IPOD_REPEAT_SETTING, E_DEVMGR_IPOD_REPEAT_ONE}, "[INFO ] Repeat Setting 1\n"},
        {{DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, 12},
         "[INFO ] Event is DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING\n"
         "[INFO ] Play Context Changed.  Total current items 12\n"},
        {{DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, 48000},
         "[INFO ] Event is DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE\n"
         "[INFO ] USB Audio sample rate changed to 48000\n[ERROR] not restarting ipod stream\n"},
        {{DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO, 50},
         "[INFO ] Database is getting build Percentage Completion =50\n"},
        {{DEV_MGR_EVENT_DEVICE_MANAGER_EXITED},
         "[INFO ]  Device manager has exited. No API can be used anymore. Exiting."},
    };
    for (const auto& testCase : cases) {
        EXPECT_EQ(LogOf(testCase.words, testCase.texts), testCase.log);
    }
    EXPECT_TRUE(m_manager->IsExitRequested());
    // The last three are behind the names' table; the second of them would wrap back into it.
    for (const u32 other : std::initializer_list<u32>{
             DEV_MGR_EVENT_NONE, DEV_MGR_EVENT_USB_OVERCURRENT_DETECTED, DEV_MGR_EVENT_IPOD_NOT_RESPONDING,
             DEV_MGR_EVENT_MAX_DEVICES_ALREADY_CONNECTED, DEV_MGR_EVENT_LAST, 39, 81, 0xFFFFFF95,
             4000000000}) {
        EXPECT_THAT(LogOf({other}), HasSubstr(other < 81 ? "[INFO ] Event from process handle "
                                                         : "is DEV_MGR_UNKNOWN_FAILURE\n"));
    }
}

TEST_F(EventsTest, AStoragesNameIsLoggedByteByByteUpToItsDoubleZeroOrItsFieldsEnd) {
    using namespace std::string_literals;
    for (const std::string& name :
         {"A\0B"s, "\xE9%s\xFF"s, "\0\xD8x"s, ""s, std::string(253, 'n'), std::string(255, '\xC3')}) {
        DeviceEvent event = DeviceSimulator::MakeEvent(
            {DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_USB_FAT_32, DEV_MGR_MOUNT_PASSED, 1, 2, 9});
        name.copy(event.text, sizeof event.text);
        std::memcpy(event.text + 255, "/mnt\0SERIAL", 12);
        std::string logged = "[INFO ] Mount passed.\n[INFO ] Device name is: ";
        for (const char byte : name) {
            logged += "[INFO ] "s + byte;
        }
        TakeLog();
        m_simulator.Fire(event);
        m_simulator.Drain();
        EXPECT_THAT(TakeLog(),
                    HasSubstr(logged + "[INFO ] \n[INFO ] Product Id is 0x1\n[INFO ] Vendor Id is 0x2\n"
                                       "[INFO ] Device handle is 9\n[INFO ] Mount path is: /mnt\n"
                                       "[INFO ] Serial     is: SERIAL\n"))
            << testing::PrintToString(name);
    }
}

TEST_F(EventsTest, AnEventGoesToTheManagerThatItIsFor) {
    RecordedNotifications others;
    IpodManager other(&others, Folders());
    EXPECT_EQ(other.RegisterProcess(), 0);
    const u32 handles[] = {m_manager->ProcessHandle(), other.ProcessHandle(), 12345};
    ASSERT_NE(handles[0], handles[1]);
    const std::string nobodys = "[WARN ] non-matching ipod manager found!\n";
    const DeviceEvent event = DeviceSimulator::MakeEvent({DEV_MGR_EVENT_PLAY_STARTED});
    for (const u32 handle : handles) {
        TakeLog();
        DeviceManagerCallback(&event, handle);
        EXPECT_EQ(m_notifications.Take().size(), handle == handles[0] ? 1u : 0u) << handle;
        EXPECT_EQ(others.Take().size(), handle == handles[1] ? 1u : 0u) << handle;
        EXPECT_EQ(TakeLog(), handle == handles[2] ? nobodys + nobodys : nobodys) << handle;
    }
    DeviceManagerCallback(nullptr, handles[0]);
    EXPECT_EQ(other.Shutdown(), 0);
}

TEST_F(EventsTest, EventsThatComeBeforeTheRegistrationHasReturnedAreItsOwn) {
    RecordedNotifications notifications;
    IpodManager early(&notifications, Folders());
    m_standIns.eDevMgrRegisterProcess = [](u32* handle, DeviceEventCallback callback) {
        const DeviceEvent started = DeviceSimulator::MakeEvent({DEV_MGR_EVENT_PLAY_STARTED});
        const DeviceEvent exited = DeviceSimulator::MakeEvent({DEV_MGR_EVENT_DEVICE_MANAGER_EXITED});
        std::thread([&] {
            callback(&started, 4711);
            callback(&exited, 4711);
        }).join();
        *handle = 4711;
        return DEV_MGR_SUCCESS;
    };
    m_standIns.eDevMgrAllocateSharedMemory = Answering(DEV_MGR_MEMORY_ERROR);
    UseStandIns();
    EXPECT_EQ(early.RegisterProcess(), 0);
    EXPECT_EQ(early.ProcessHandle(), 4711u);
    EXPECT_EQ(notifications.Take().size(), 1u);
    EXPECT_TRUE(early.IsExitRequested());
    EXPECT_TRUE(m_notifications.Take().empty()) << "another's";
    EXPECT_FALSE(m_manager->IsExitRequested());
    const DeviceEvent late = DeviceSimulator::MakeEvent({DEV_MGR_EVENT_PLAY_STARTED});
    DeviceManagerCallback(&late, 4712);
    EXPECT_TRUE(notifications.Take().empty()) << "nobody's, now that the handle is known";
}

TEST_F(EventsTest, TimeIsToldWithADeviceOnlyAndPausesAlways) {
    for (const bool isConnected : {false, true}) {
        if (isConnected) {
            Connect();
        }
        Fire({DEV_MGR_EVENT_PLAY_TIME, 4000000000});
        Fire({DEV_MGR_EVENT_PLAY_STARTED});
        Fire({DEV_MGR_EVENT_PLAY_PAUSED});
        EXPECT_EQ(m_notifications.Take(), isConnected ? (Texts{"time 4000000000", "paused 0", "paused 1"})
                                                      : (Texts{"paused 0", "paused 1"}));
    }
}

TEST_F(EventsTest, TrackAndContextEventsAskForOneTrackInfoEach) {
    Connect();
    Fire({DEV_MGR_EVENT_PLAY_TRACK_CHANGED});
    Fire({DEV_MGR_EVENT_PLAY_TRACK_CHANGED});
    m_manager->UpdatePlayStatus();
    m_manager->UpdatePlayStatus();
    EXPECT_EQ(m_notifications.Take().size(), 1u);
    // A context event asks at once and, since the device may not be done, again a second later.
    const auto start = std::chrono::steady_clock::now();
    Fire({DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, 5});
    std::size_t seen = 0;
    EXPECT_TRUE(TestSupport::WaitUntil([&] {
        m_manager->UpdatePlayStatus();
        seen += m_notifications.Take().size();
        return seen >= 2;
    }));
    EXPECT_EQ(seen, 2u);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(990));
}

TEST_F(EventsTest, TheLoopSleepsNoLongerThanUntilTheNextStep) {
    using std::chrono::milliseconds;
    EXPECT_EQ(m_manager->TimeToNextStep(), milliseconds(1000));
    Connect();
    m_manager->UpdatePlayStatus();
    EXPECT_EQ(m_manager->TimeToNextStep(), milliseconds(1000));
    m_manager->RequestDelayedAlbumArt();
    EXPECT_EQ(m_manager->TimeToNextStep(), milliseconds(25));
    m_manager->ProcessDelayedAlbumArt();
    Fire({DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, 1});
    m_manager->UpdatePlayStatus();
    EXPECT_TRUE(TestSupport::WaitUntil([&] { return m_manager->TimeToNextStep() < milliseconds(900); }));
}

TEST_F(EventsTest, AManagerCanGoWhileEventsCome) {
    std::atomic<bool> done{false};
    std::thread storm([&] {
        const DeviceEvent event = DeviceSimulator::MakeEvent({DEV_MGR_EVENT_PLAY_STARTED});
        while (!done) {
            DeviceManagerCallback(&event, 0);
        }
    });
    for (int i = 0; i < 50; ++i) {
        RecordedNotifications notifications;
        const IpodManager manager(&notifications, Folders());
        while (notifications.Take().empty()) {
            std::this_thread::yield();
        }
    }
    done = true;
    storm.join();
}

}  // namespace
