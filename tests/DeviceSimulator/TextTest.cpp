#include "DeviceSimulator/Text.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace DeviceSimulator {
namespace {

TEST(CutText, KeepsWholeCharacters) {
    struct Case {
        std::string_view text;
        std::size_t room;
        std::string_view expected;
    };
    const Case cases[] = {
        {"abc", 3, "abc"},
        {"abc", 2, "ab"},
        {"abc", 0, ""},
        {"a\u00e9", 2, "a"},
        {"a\u00e9", 3, "a\u00e9"},
        {"\u20ac\u20ac", 5, "\u20ac"},
        {"\U0001F3B5x", 3, ""},
        {"\x80\x80\x80\x80\x80\x80", 5, "\x80\x80\x80\x80\x80"},
        {"\xc3", 0, ""},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(CutText(c.text, c.room), c.expected) << c.text << " at " << c.room;
    }
}

TEST(CopyText, FillsTheFieldWithZeros) {
    std::array<char, 6> field;
    field.fill('x');
    CopyText(field, "ab");
    EXPECT_EQ(std::string(field.data(), field.size()), std::string("ab\0\0\0\0", 6));
    CopyText(field, "abcdefgh");
    EXPECT_EQ(std::string(field.data(), field.size()), std::string("abcde\0", 6));
}

}  // namespace
}  // namespace DeviceSimulator
