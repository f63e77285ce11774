// What events log and change.

#include <cstring>
#include <thread>

#include "IpodService/IpodManagerRegistry.h"
#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class EventsTest : public ManagerTest {
  protected:
    std::string LogOf(std::initializer_list<u32> words, std::initializer_list<std::string_view> texts = {}) {
        m_log.Take();
        Fire(words, texts);
        return m_log.Take();
    }
};

TEST_F(EventsTest, TimeAndPauseGoOutAtOnce) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    Fire({8, 1000});
    Fire({9});
    Fire({10});
    EXPECT_THAT(m_notifications.Take(), ElementsAre("paused 0", "paused 1"));
    Connect();
    EXPECT_EQ(LogOf({8, 4000000000}), "");
    EXPECT_EQ(LogOf({9}), "");
    EXPECT_THAT(m_notifications.Take(), ElementsAre("time 4000000000", "paused 0"));
}

TEST_F(EventsTest, EveryEventLogsItsOwnTexts) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    struct {
        std::initializer_list<u32> words;
        std::initializer_list<std::string_view> texts;
        const char* log;
    } const cases[] = {
        {{3, 17, 7, 0x12a8, 0x5ac},
         {"Phone", "/dev/x", "S1"},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n"
         "[INFO ] Device is iAP DEV_MGR_DEVICE_TYPE_IAP2_2WIRE\n[INFO ] Device name is: Phone\n"
         "[INFO ] Product Id is 0x12a8\n[INFO ] Vendor Id is 0x5ac\n[INFO ] Device handle is 7\n"
         "[INFO ] Device node is /dev/x\n[INFO ] Device Serial is S1\n"},
        {{3, 23, 7, 1, 2, 5},
         {"Mtp", "node", "S2"},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n"
         "[INFO ] Device name is: Mtp\n[INFO ] Name length is 5\n[INFO ] Product Id is 0x1\n"
         "[INFO ] Vendor Id is 0x2\n[INFO ] Device handle is 7\n[INFO ] Device Node is node\n"
         "[INFO ] Device Serial is S2\n"},
        {{3, 27, 0, 1, 2, 9},
         {"Stick", "/mnt"},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n"
         "[INFO ] MASS STORAGE DEVICE CONNECTED WITHOUT MEDIA.\n[INFO ] Device name is: Stick\n"
         "[INFO ] Product Id is 0x1\n[INFO ] Vendor Id is 0x2\n[INFO ] Mount path is: /mnt\n"
         "[INFO ] PLEASE INSERT MEDIA TO CONTINUE\n[INFO ] Probable Device handle is 9\n\n"},
        {{3, 2, 7},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n"
         "[INFO ] Mass storage device is connected. Type is DEV_MGR_DEVICE_TYPE_USB_FAT_32\n[INFO ] Mount "
         "failed"},
        {{3, 25},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n[INFO ] USB device is connected. Yet unknown. "
         "Reading.\n"
         "[INFO ] Another Connected event will be received if connected device is supported.\n"},
        {{3, 26, 0x10, 0x20},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n[INFO ] HUB is connected.\n"
         "[INFO ] PID of connected HUB is 0x10\n[INFO ] VID of connected HUB is 0x20\n"},
        {{3, 28},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_CONNECTED\n[INFO ] Connected device is unsupported.\n"},
        {{4, 26, 0x10, 0x20},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_DISCONNECTED\n[INFO ] HUB is disconnected\n"
         "[INFO ] PID of disconnected HUB is 0x10\n[INFO ] VID of disconnected HUB is 0x20\n"},
        {{4, 17, 7, 1, 2, 6},
         {"Phone", "node", "S1"},
         "[INFO ] Event is DEV_MGR_EVENT_DEVICE_DISCONNECTED\n"
         "[INFO ] Type of disconnected device is DEV_MGR_DEVICE_TYPE_IAP2_2WIRE\nHandle of disconnected "
         "device is 7\n"
         "Product ID of disconnected device is 0x1\nVendor ID of disconnected device is 0x2\n"
         "Name of disconnected device is Phone\n[INFO ] Node of discoonected MTP/iAP device is node\n"
         "[INFO ] Serial of disconected device is S1\n"
         "[INFO ] if you are in FS browse, press \"x\" and come out as device is disconnected\n"
         "[INFO ] if you are in iPod Menu, press \"c\" to return to main menu\n\n"},
        {{12, 0, 0, 0, 0, 3},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_PLAY_STOPPED\n"
         "[INFO ] Playback related event from device with device handle 3\n\n"},
        {{35, 0, 0, 0, 0, 3},
         {"node"},
         "[INFO ] Event is DEV_MGR_EVENT_AUTH_LOCKED\n"
         "[INFO ] Authentication related event for device with device handle 3, Node = node\n\n"
         "[INFO ] Auth Locked\n"},
        {{21, 0, 0, 12, 5, 3},
         {"\x01\x02\x03\x04"},
         "[INFO ] Application Support related event for device 3\n[INFO ] Session Opened:[sessionID] - 5\n"
         "[INFO ] The protocol string:[\x01\x02\x03\x04]\n[INFO ] Received Data from iPod:[sessionID] : 5\n"
         "[INFO ] Data length is                      : 12\n[INFO ] The X coordinate is                 : "
         "772\n"
         "[INFO ] The Y coordinate is                 : 258\n"},
        {{22, 0, 0, 0, 5, 3},
         {"p"},
         "[INFO ] Application Support related event for device 3\n[INFO ] Session Closed:[sessionID] - 5\n"
         "[INFO ] The protocol string:[p]\n"},
        {{26, 0, 0, 0, 0, 3},
         {"com.x"},
         "[INFO ] NowPlayingApplicationBundleName event received from connected iPod device 3\n"
         "[INFO ] NowPlayingApplicationBundleName is com.x\n\n\n"},
        {{28, 0, 0, 0, 5, 3},
         {},
         "[INFO ] SessionSpaceAvailable event received from connected iPod device 3\n"
         "[INFO ] Session space is now available for session ID 5\n\n\n"},
        {{31, 0, 0, 0, 5, 3}, {}, "[INFO ] Charging Info Type 5\n[INFO ] Charging Info value3\n"},
        {{32, 2}, {}, "[INFO ] Shuffle Setting 2\n"},
        {{33, 1}, {}, "[INFO ] Repeat Setting 1\n"},
        {{34, 12},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING\n"
         "[INFO ] Play Context Changed.  Total current items 12\n"},
        {{17, 48000},
         {},
         "[INFO ] Event is DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE\n"
         "[INFO ] USB Audio sample rate changed to 48000\n[ERROR] not restarting ipod stream\n"},
        {{37, 50}, {}, "[INFO ] Database is getting build Percentage Completion =50\n"},
    };
    for (const auto& testCase : cases)
        EXPECT_EQ(LogOf(testCase.words, testCase.texts), testCase.log);
    for (const u32 other : {0u, 2u, 5u, 24u, 30u, 38u, 39u, 4000000000u})
        EXPECT_THAT(LogOf({other}), HasSubstr("[INFO ] Event from process handle "));
    EXPECT_THAT(LogOf({39}), HasSubstr("[INFO ] Event is DEV_MGR_DEVICE_TYPE_USB_FAT_12\n"));
}

TEST_F(EventsTest, AWideNameComesOutByteByByteUpToItsDoubleZero) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    DeviceEvent event{};
    event.words[0] = 3;
    event.words[1] = 2;
    event.words[2] = 6;
    std::memcpy(event.text, "A\0B\0\0", 5);
    std::memcpy(event.text + 255, "/mnt\0SERIAL", 12);
    m_log.Take();
    m_simulator.Fire(event);
    m_simulator.Drain();
    const std::string log = m_log.Take();
    const std::string zero(1, '\0');
    EXPECT_THAT(log, HasSubstr("[INFO ] Device name is: [INFO ] A[INFO ] " + zero + "[INFO ] B[INFO ] \n"));
    EXPECT_THAT(log, HasSubstr("[INFO ] Mount path is: /mnt\n[INFO ] Serial     is: SERIAL\n"));
}

TEST_F(EventsTest, HostileRecordsAreReadWithinTheirBounds) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    DeviceEvent event;
    for (u32 id = 0; id <= 60; ++id) {
        for (const u32 type : {0u, 6u, 17u, 23u, 25u, 26u, 27u, 28u, 0xFFFFFFFFu}) {
            for (const u32 word : {6u, 1023u, 0xFFFFFFF0u}) {
                std::memset(&event, 0xFF, sizeof event);
                const u32 words[] = {id, type, word, word, word, word};
                std::memcpy(event.words, words, sizeof words);
                IpodManagerRegistry::DeviceManagerCallback(&event, m_manager->ProcessHandle());
            }
        }
    }
    IpodManagerRegistry::DeviceManagerCallback(nullptr, m_manager->ProcessHandle());
    EXPECT_TRUE(m_manager->IsExitRequested());
}

TEST_F(EventsTest, TrackAndContextEventsAskForOneTrackInfoEach) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    Fire({13});
    Fire({34, 5});
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(), IsEmpty()) << "without a device";
    Connect();
    Fire({13});
    Fire({13});
    m_manager->UpdatePlayStatus();
    EXPECT_EQ(m_notifications.Take().size(), 1u);
    m_manager->UpdatePlayStatus();
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
    // A context event asks at once and, since the device may not be done, again a second later.
    const auto start = std::chrono::steady_clock::now();
    Fire({34, 5});
    std::vector<std::string> seen;
    while (seen.size() < 2 && std::chrono::steady_clock::now() - start < std::chrono::seconds(20)) {
        m_manager->UpdatePlayStatus();
        for (std::string& text : m_notifications.Take())
            seen.push_back(std::move(text));
        std::this_thread::yield();
    }
    EXPECT_EQ(seen.size(), 2u);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(990));
}

TEST_F(EventsTest, TheDeviceManagersEndAsksForTheExit) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    EXPECT_EQ(LogOf({1}), "[INFO ]  Device manager has exited. No API can be used anymore. Exiting.");
    EXPECT_TRUE(m_manager->IsExitRequested());
}

TEST_F(EventsTest, AnEventGoesToTheManagerThatItIsFor) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    RecordedNotifications others;
    const IpodManager other(&others, DeviceFolders{m_scratch.Path(), m_scratch.Path()});
    EXPECT_EQ(LogOf({9}), "[WARN ] non-matching ipod manager found!\n");
    EXPECT_THAT(others.Take(), IsEmpty());
    EXPECT_THAT(m_notifications.Take(), ElementsAre("paused 0"));
    const DeviceEvent event = DeviceSimulator::MakeEvent({9});
    IpodManagerRegistry::DeviceManagerCallback(&event, 12345);
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
}

TEST_F(EventsTest, AManagerCanGoWhileEventsCome) {
    std::atomic<bool> done{false};
    std::thread storm([&] {
        const DeviceEvent event = DeviceSimulator::MakeEvent({9});
        while (!done)
            IpodManagerRegistry::DeviceManagerCallback(&event, 0);
    });
    for (int i = 0; i < 50; ++i) {
        RecordedNotifications notifications;
        const IpodManager manager(&notifications, DeviceFolders{m_scratch.Path(), m_scratch.Path()});
        while (notifications.All().empty())
            std::this_thread::yield();
    }
    done = true;
    storm.join();
}

}  // namespace
