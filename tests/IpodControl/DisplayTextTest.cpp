#include "IpodControl/DisplayText.h"

#include <gtest/gtest.h>

#include "IpodControl/commands/NameSearch.h"

namespace IpodControl {
namespace {

using namespace std::string_literals;

// Names come from the player: on a terminal they must neither act nor look like something else.
TEST(DisplayTextTest, NothingHarmfulIsPrinted) {
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

TEST(DisplayTextTest, FitsColumnsAndFindsNames) {
    EXPECT_EQ(DisplayWidth("a\u00e5\u661f"), 4U);  // the last one is two cells wide
    EXPECT_EQ(Folded("\u00c9LODIE \u0421\u0435"), "\u00e9lodie \u0441\u0435");
    EXPECT_EQ(ClockText(214'999), "3:34");
}

}  // namespace
}  // namespace IpodControl
