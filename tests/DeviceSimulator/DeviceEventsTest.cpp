#include "DeviceSimulator/device/DeviceEvents.h"

#include <gtest/gtest.h>

#include <string>

namespace DeviceSimulator {
namespace {

using Words = std::vector<std::uint32_t>;

/// The words, then the texts as a reader finds them: one behind the other.
std::pair<Words, std::string> Read(const DeviceEvent& event) {
    std::string texts;
    const char* text = event.text;
    for (int i = 0; i < 3; ++i) {
        texts += std::string(text) + "|";
        text += std::string(text).size() + 1;
    }
    return {{std::begin(event.words), std::end(event.words)}, texts};
}

TEST(DeviceEventsTest, ConnectAndDisconnectByType) {
    using Record = std::pair<Words, std::string>;
    const std::tuple<std::uint32_t, Record, Record> cases[] = {
        {DEV_MGR_DEVICE_TYPE_IAP_2WIRE,
         {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_IAP_2WIRE, 7, 18, 52, 0}, "Name|/dev/x|S1|"},
         {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_IAP_2WIRE, 7, 18, 52, 5},
          "Name|/dev/x|S1|"}},
        {DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL,
         {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL, 7, 18, 52, 4},
          "Name|/dev/x|S1|"},
         {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL, 7, 18, 52, 5},
          "Name|/dev/x|S1|"}},
        {DEV_MGR_DEVICE_TYPE_USB_FAT_32,
         {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_USB_FAT_32, DEV_MGR_MOUNT_PASSED, 18, 52, 7},
          "Name|||"},
         {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_USB_FAT_32, 7, 18, 52, 5},
          "Name|/mnt/x|S1|"}},
        {DEV_MGR_DEVICE_TYPE_NO_MEDIUM,
         {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_NO_MEDIUM, 0, 18, 52, 7}, "Name|/mnt/x|S1|"},
         {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_NO_MEDIUM, 7, 18, 52, 5}, "Name|S1||"}},
        {DEV_MGR_DEVICE_TYPE_HUB,
         {{DEV_MGR_EVENT_DEVICE_CONNECTED, DEV_MGR_DEVICE_TYPE_HUB, 18, 52, 0, 0}, "|||"},
         {{DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_HUB, 18, 52, 0, 0}, "|||"}},
    };
    for (const auto& [type, connect, disconnect] : cases) {
        DeviceIdentity identity{type, 7, 18, 52, "Name", "/dev/x", "S1", ""};
        identity.mountPath = IsStick(type) || type == DEV_MGR_DEVICE_TYPE_NO_MEDIUM ? "/mnt/x" : "";
        EXPECT_EQ(Read(MakeArrivalEvents(identity).front()), connect) << type;
        EXPECT_EQ(Read(MakeDisconnectEvent(identity)), disconnect) << type;
    }
}

TEST(DeviceEventsTest, TextsAreCutAtTheEndOfTheirRoom) {
    const std::string longText(1020, 'a');
    const DeviceEvent event = MakeEvent({1, 2, 3, 4, 5, 6, 7, 8}, {longText, "bcdef", "never"});
    EXPECT_EQ(event.words[5], 6U);
    EXPECT_STREQ(event.text + 1021, "bc");
    // A stick's mount path is at a fixed place, however long the name.
    const DeviceIdentity stick{DEV_MGR_DEVICE_TYPE_USB_FAT_32, 7, 18, 52, longText, "", "S1", "/mnt/x"};
    const DeviceEvent arrival = MakeArrivalEvents(stick).front();
    EXPECT_EQ(std::string(arrival.text), std::string(254, 'a'));
    EXPECT_STREQ(arrival.text + 255, "/mnt/x");
}

}  // namespace
}  // namespace DeviceSimulator
