// What of a device's texts reaches JSON.

#include <gtest/gtest.h>

#include "IpodService/Utf8Text.h"

namespace {

std::string Marks(std::size_t count) {
    std::string marks;
    for (; count > 0; --count) {
        marks += "\xEF\xBF\xBD";
    }
    return marks;
}

TEST(WellFormedUtf8, MarksEachIllFormedByteAndNothingElse) {
    // By the number of bytes at the front that are to be marked; the rest stays.
    const std::pair<std::size_t, std::vector<std::string>> cases[] = {
        // The first and last character of each length, and the neighbours of the surrogates.
        {0,
         {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF",
          "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"}},
        {1, {"\x80z", "\xFFz", "\xC3z"}},
        {2, {"\xE2\x82z", "\xC1\xBFz", "\xE2\x82\xC3\xA9"}},  // the last with a whole character behind
        {3, {"\xE0\x9F\xBFz", "\xED\xA0\x80z"}},
        {4, {"\xF0\x8F\xBF\xBFz", "\xF4\x90\x80\x80z", "\xF5\x80\x80\x80z"}},  // the first overlong
    };
    for (const auto& [ill, texts] : cases) {
        for (const std::string& text : texts) {
            EXPECT_EQ(WellFormedUtf8("a" + text, 256), "a" + Marks(ill) + text.substr(ill))
                << testing::PrintToString(text);
        }
    }
}

TEST(WellFormedUtf8, DropsACharacterThatTheRecordCutOff) {
    for (const std::string cut : {"\xC3", "\xE2\x82", "\xF0\x9F\x8E"}) {
        const std::string text = "ab" + cut;
        EXPECT_EQ(WellFormedUtf8(text, text.size()), "ab");
        EXPECT_EQ(WellFormedUtf8(text, text.size() + 1), "ab");
        // A text that ends before its record was not cut.
        EXPECT_EQ(WellFormedUtf8(text, text.size() + 2), "ab" + Marks(cut.size()));
    }
    EXPECT_EQ(WellFormedUtf8("ab\xED\xA0", 4), "ab" + Marks(2));  // no character begins like this
}

}  // namespace
