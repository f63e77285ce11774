#include <gtest/gtest.h>

#include "IpodControl/ClockText.h"
#include "IpodControl/ctl/Picture.h"
#include "IpodControl/ctl/Text.h"

namespace IpodControl {
namespace {

using namespace std::string_literals;

// What comes from the player has padding behind it, and may have a whole picture in its header.
TEST(PicturesAndTextsTest, EndsAtItsOwnEndMarker) {
    const std::string head = "\xff\xd8\xff\xe1\x00\x08\xff\xd8\xff\xd9xx"s;             // a picture in it
    const std::string frame = "\xff\xc0\x00\x0b\x08\x00\x10\x01\x20\x01\x11\x00\x00"s;  // 288 x 16
    const std::string scan = "\xff\xda\x00\x03\x01"s;
    const std::string data = "\x12\xff\x00\x34\xff\xd0\x56"s;  // a stuffed byte, a restart
    const std::string tables = "\xff\xff\xc4\x00\x03\x01"s;    // between two scans, with a fill byte
    const std::string picture = head + frame + scan + data + tables + scan + data + "\xff\xd9";
    const auto jpeg = MeasureJpeg(picture + "\0\0\xff\xd9padding"s);
    ASSERT_TRUE(jpeg);
    EXPECT_EQ(jpeg->length, picture.size());
    EXPECT_EQ(jpeg->height, 16U);
    for (std::size_t length = 2; length < picture.size(); ++length) {
        const auto cut = MeasureJpeg(std::string_view(picture).substr(0, length));
        ASSERT_TRUE(cut && !cut->isComplete) << length;
        EXPECT_EQ(cut->length, length);
    }
}

// Names come from the player: on a terminal they must neither act nor look like something else.
TEST(PicturesAndTextsTest, NothingHarmfulIsPrinted) {
    const std::string r = "\ufffd";
    const struct {
        std::string text, harmless;
    } cases[] = {
        {"Solv\u00e5g \u661f", "Solv\u00e5g \u661f"},
        {"\x1b]0;owned\x07 a\nb\r\t\x7f", r + "]0;owned" + r + " a" + r + "b" + r + r + r},
        {"\u009b31m", r + "31m"},                 // a control beyond ASCII, which terminals take for ESC [
        {"a\u202egpj.exe", "a" + r + "gpj.exe"},  // turns the writing direction
        {"\xc3", r},
        {"\xc0\x9b x", r + r + " x"},  // ESC in more bytes than it needs
    };
    for (const auto& each : cases)
        EXPECT_EQ(Harmless(each.text), each.harmless);
    EXPECT_EQ(HarmlessJson("{\"a\":\"\u009b\x7f\u00e5\"}"), "{\"a\":\"\\u009b\\u007f\u00e5\"}");
}

TEST(PicturesAndTextsTest, FitsColumnsAndFindsNames) {
    EXPECT_EQ(DisplayWidth("a\u00e5\u661f"), 4U);  // the last one is two cells wide
    EXPECT_EQ(Folded("\u00c9LODIE \u0421\u0435"), "\u00e9lodie \u0441\u0435");
    EXPECT_EQ(EditDistance("Artistz", "Artists"), 1U);
    EXPECT_EQ(ClockText(214'999), "3:34");
}

}  // namespace
}  // namespace IpodControl
