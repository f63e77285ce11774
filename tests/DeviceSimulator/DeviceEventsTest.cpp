#include "DeviceSimulator/DeviceEvents.h"

#include <gtest/gtest.h>

#include <string>

namespace DeviceSimulator {
namespace {

using Words = std::vector<std::uint32_t>;

Words WordsOf(const DeviceEvent& event) {
    return {std::begin(event.words), std::end(event.words)};
}

/// The texts as a reader finds them: one behind the other.
std::string TextsOf(const DeviceEvent& event, std::size_t count) {
    std::string all;
    const char* text = event.text;
    for (std::size_t i = 0; i < count; ++i) {
        all += std::string(text) + "|";
        text += std::string(text).size() + 1;
    }
    return all;
}

DeviceIdentity Identity(std::uint32_t type) {
    DeviceIdentity identity{type, 7, 0x12, 0x34, "Name", "/dev/x", "S1", ""};
    if (IsStick(type) || type == kNoMedium) {
        identity.mountPath = "/mnt/x";
    }
    return identity;
}

TEST(DeviceEvents, ConnectAndDisconnectByType) {
    struct Case {
        std::uint32_t type;
        Words connect;
        std::string connectTexts;
        Words disconnect;
        std::string disconnectTexts;
    };
    const Case cases[] = {
        {14, {3, 14, 7, 0x12, 0x34, 0}, "Name|/dev/x|S1|", {4, 14, 7, 0x12, 0x34, 5}, "Name|/dev/x|S1|"},
        {19, {3, 19, 7, 0x12, 0x34, 0}, "Name|/dev/x|S1|", {4, 19, 7, 0x12, 0x34, 5}, "Name|/dev/x|S1|"},
        {23, {3, 23, 7, 0x12, 0x34, 4}, "Name|/dev/x|S1|", {4, 23, 7, 0x12, 0x34, 5}, "Name|/dev/x|S1|"},
        {2, {3, 2, 6, 0x12, 0x34, 7}, "Name|", {4, 2, 7, 0x12, 0x34, 5}, "Name|/mnt/x|S1|"},
        {27, {3, 27, 0, 0x12, 0x34, 7}, "Name|/mnt/x|S1|", {4, 27, 7, 0x12, 0x34, 5}, "Name|S1||"},
        {26, {3, 26, 0x12, 0x34, 0, 0}, "|||", {4, 26, 0x12, 0x34, 0, 0}, "|||"},
        {25, {3, 25, 0, 0, 0, 0}, "|||", {4, 25, 0, 0, 0, 0}, "|||"},
    };
    for (const Case& c : cases) {
        const DeviceEvent connect = MakeArrivalEvents(Identity(c.type)).front();
        EXPECT_EQ(WordsOf(connect), c.connect) << c.type;
        EXPECT_EQ(TextsOf(connect, IsStick(c.type) ? 1 : 3), c.connectTexts) << c.type;
        const DeviceEvent disconnect = MakeDisconnectEvent(Identity(c.type));
        EXPECT_EQ(WordsOf(disconnect), c.disconnect) << c.type;
        EXPECT_EQ(TextsOf(disconnect, 3), c.disconnectTexts) << c.type;
    }
}

TEST(DeviceEvents, AStickHasItsMountPathAtAFixedPlace) {
    DeviceIdentity stick = Identity(2);
    stick.name = std::string(300, 'n');
    const DeviceEvent event = MakeArrivalEvents(stick).front();
    EXPECT_EQ(std::string(event.text), std::string(254, 'n'));
    EXPECT_STREQ(event.text + 255, "/mnt/x");
    EXPECT_STREQ(event.text + 262, "S1");
}

TEST(DeviceEvents, OnlyPlayersAuthenticate) {
    EXPECT_EQ(MakeArrivalEvents(Identity(2)).size(), 1U);
    const auto events = MakeArrivalEvents(Identity(15));
    ASSERT_EQ(events.size(), 3U);
    EXPECT_EQ(WordsOf(events[1]), (Words{18, 0, 0, 0, 0, 7}));
    EXPECT_STREQ(events[1].text, "/dev/x");
    EXPECT_EQ(WordsOf(events[2]), (Words{19, 0, 0, 0, 0, 7}));
}

TEST(DeviceEvents, TooMuchIsCutAtTheRecordsEnd) {
    const std::string longText(1020, 'a');
    const DeviceEvent event = MakeEvent({1, 2, 3, 4, 5, 6, 7, 8}, {longText, "bcdef", "never"});
    EXPECT_EQ(WordsOf(event), (Words{1, 2, 3, 4, 5, 6}));
    EXPECT_STREQ(event.text + 1021, "bc");
}

}  // namespace
}  // namespace DeviceSimulator
