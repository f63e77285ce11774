#include "DeviceSimulator/device/DeviceEvents.h"

#include <gtest/gtest.h>

#include <string>

#include "DeviceSimulator/control/EventNames.h"

namespace DeviceSimulator {
namespace {

/// The words, then the texts as a reader finds them: one behind the other.
std::string Read(const DeviceEvent& event) {
    std::string read = EventWord(event.words[0]) + " " + std::string(DeviceTypeWord(event.words[1]));
    for (int i = 2; i < 6; ++i) {
        read += " " + std::to_string(event.words[i]);
    }
    const char* text = event.text;
    for (int i = 0; i < 3; ++i) {
        read += "|" + std::string(text);
        text += std::string(text).size() + 1;
    }
    return read;
}

TEST(DeviceEventsTest, ConnectAndDisconnectByType) {
    const std::tuple<std::uint32_t, const char*, const char*> cases[] = {
        {DEV_MGR_DEVICE_TYPE_IAP_2WIRE, "iap 7 18 52 0|Name|/dev/x|S1", "iap 7 18 52 5|Name|/dev/x|S1"},
        {DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL, "mtp 7 18 52 4|Name|/dev/x|S1",
         "mtp 7 18 52 5|Name|/dev/x|S1"},
        {DEV_MGR_DEVICE_TYPE_USB_FAT_32, "stick 6 18 52 7|Name||", "stick 7 18 52 5|Name|/mnt/x|S1"},
        {DEV_MGR_DEVICE_TYPE_NO_MEDIUM, "no-medium 0 18 52 7|Name|/mnt/x|S1", "no-medium 7 18 52 5|Name|S1|"},
        {DEV_MGR_DEVICE_TYPE_HUB, "hub 18 52 0 0|||", "hub 18 52 0 0|||"},
    };
    for (const auto& [type, connect, disconnect] : cases) {
        DeviceIdentity identity{type, 7, 18, 52, "Name", "/dev/x", "S1", ""};
        identity.mountPath = IsStick(type) || type == DEV_MGR_DEVICE_TYPE_NO_MEDIUM ? "/mnt/x" : "";
        EXPECT_EQ(Read(MakeArrivalEvents(identity).front()), std::string("device-connected ") + connect);
        EXPECT_EQ(Read(MakeDisconnectEvent(identity)), std::string("device-disconnected ") + disconnect);
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
