// The pure pieces that device values pass through.

#include <gtest/gtest.h>

#include <cstring>

#include "IpodService/DeviceEventView.h"
#include "IpodService/DeviceManagerNames.h"
#include "IpodService/RecordText.h"

namespace {

TEST(DeviceManagerNames, SectionsBleedAndNothingIsReadBehindTheTable) {
    EXPECT_STREQ(ResultCodeName(0), "NONE");
    EXPECT_STREQ(ResultCodeName(1), "DEV_MGR_SUCCESS");
    EXPECT_STREQ(ResultCodeName(94), "DEV_MGR_IAP_APP_BUSY");
    EXPECT_STREQ(ResultCodeName(106), "DEV_MGR_UNKNOWN_FAILURE");
    EXPECT_STREQ(ResultCodeName(107), "NONE");
    EXPECT_STREQ(ResultCodeName(108), "DEV_MGR_EVENT_DEVICE_MANAGER_EXITED");
    EXPECT_STREQ(ResultCodeName(187), "E_DEVMGR_IPOD_REPEAT_ALL");
    EXPECT_STREQ(EventName(38), "DEV_MGR_EVENT_LAST");
    EXPECT_STREQ(EventName(39), "DEV_MGR_DEVICE_TYPE_USB_FAT_12");
    EXPECT_STREQ(DeviceTypeName(29), "DEV_MGR_DEVICE_NONE");
    EXPECT_STREQ(DeviceTypeName(30), "E_DEVMGR_IPOD_PLAY_PLAYING");
    EXPECT_STREQ(PlayStateName(6), "E_DEVMGR_IPOD_SHUFFLE_NONE");
    EXPECT_STREQ(ShuffleModeName(2), "E_DEVMGR_IPOD_SHUFFLE_ALBUMS");
    EXPECT_STREQ(RepeatModeName(2), "E_DEVMGR_IPOD_REPEAT_ALL");
    // Start plus value would wrap back into the table for these.
    for (const u32 value : {188u, 5000u, 0x80000000u, 0xFFFFFF50u, 0xFFFFFFFFu}) {
        for (auto* name :
             {ResultCodeName, EventName, DeviceTypeName, PlayStateName, ShuffleModeName, RepeatModeName})
            EXPECT_STREQ(name(value), "DEV_MGR_UNKNOWN_FAILURE") << value;
    }
    EXPECT_STREQ(RepeatModeName(3), "DEV_MGR_UNKNOWN_FAILURE");
}

TEST(DeviceEventView, StaysInsideTheRecord) {
    DeviceEvent event;
    std::memset(&event, 0xFF, sizeof event);
    const DeviceEventView full(event);
    EXPECT_EQ(full.Text(0).Length(), 1024);
    EXPECT_EQ(full.Text(1).Length(), 0);
    EXPECT_EQ(full.Text(2).Length(), 0);
    for (const u32 offset : {1023u, 1024u, 1048u, 0xFFFFFFF0u, 0xFFFFFFFFu}) {
        EXPECT_EQ(full.TextAt(offset).Length(), offset == 1023 ? 1 : 0) << offset;
        EXPECT_EQ(full.TextAfter(offset).Length(), 0) << offset;
    }
    EXPECT_EQ(full.Byte(1023), 0xFF);
    EXPECT_EQ(full.Byte(1024), 0);
    EXPECT_EQ(full.BigEndian16(0), 0xFFFF);

    DeviceEvent packed{};
    std::memcpy(packed.text, "one\0two\0three", 14);
    const DeviceEventView texts(packed);
    EXPECT_EQ(texts.Text(0).View(), "one");
    EXPECT_EQ(texts.Text(1).View(), "two");
    EXPECT_EQ(texts.Text(2).View(), "three");
    EXPECT_EQ(texts.Text(3).View(), "");
    EXPECT_EQ(texts.TextAfter(4).View(), "three");
    packed.text[0] = 1;
    packed.text[1] = static_cast<char>(0x80);
    EXPECT_EQ(texts.BigEndian16(0), 0x180);
}

TEST(RecordText, EndsWithItsFieldAndBuffersAreNeverOverrun) {
    TrackMetadataRecord record;
    std::memset(&record, 'A', sizeof record);
    EXPECT_EQ(RecordText(record.title).Length(), 255);
    record.title[3] = '\0';
    EXPECT_EQ(RecordText(record.title).View(), "AAA");

    std::array<char, 8> buffer{};
    CopyText("seven77", buffer);
    AppendText(".db", buffer);
    EXPECT_STREQ(buffer.data(), "seven77");
    CopyText("five5", buffer);
    AppendText(".db", buffer);
    EXPECT_STREQ(buffer.data(), "five5.d");
    CopyText("longer than the buffer", buffer);
    EXPECT_STREQ(buffer.data(), "longer ");
}

}  // namespace
