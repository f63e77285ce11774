// Characters, base64 and JSON that come from anywhere.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ServiceUtil/Base64.h"
#include "ServiceUtil/JsonText.h"
#include "ServiceUtil/Utf8.h"

namespace {

std::string Marks(std::size_t count) {
    std::string marks;
    for (; count > 0; --count) {
        marks += "\xEF\xBF\xBD";
    }
    return marks;
}

TEST(WellFormedUtf8Test, MarksEachIllFormedByteAndNothingElse) {
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

TEST(WellFormedUtf8Test, DropsACharacterThatTheRecordCutOff) {
    for (const std::string cut : {"\xC3", "\xE2\x82", "\xF0\x9F\x8E"}) {
        const std::string text = "ab" + cut;
        EXPECT_EQ(WellFormedUtf8(text, text.size()), "ab");
        EXPECT_EQ(WellFormedUtf8(text, text.size() + 1), "ab");
        // A text that ends before its record was not cut.
        EXPECT_EQ(WellFormedUtf8(text, text.size() + 2), "ab" + Marks(cut.size()));
    }
    EXPECT_EQ(WellFormedUtf8("ab\xED\xA0", 4), "ab" + Marks(2));  // no character begins like this
}

TEST(Utf8Test, TakesCharactersAndCutsBetweenThem) {
    const std::string text{"a\0\u00e5\u661f\U0001F3B5\xED\xA0\xC3", 14};
    std::u32string taken;
    for (std::string_view rest = text; !rest.empty();) {
        taken += TakeCharacter(rest);
    }
    EXPECT_EQ(taken, (std::u32string{U'a', U'\0', 0xE5, 0x661F, 0x1F3B5, 0xFFFD, 0xFFFD, 0xFFFD}));
    std::string again;
    for (const char32_t character : taken.substr(0, 5)) {
        AppendUtf8(again, character);
    }
    EXPECT_EQ(again, text.substr(0, 11));
    const std::size_t whole[] = {0, 1, 2, 2, 4, 4, 4, 7, 7, 7, 7, 11, 11, 13, 14, 14};
    for (std::size_t most = 0; most < std::size(whole); ++most) {
        EXPECT_EQ(CutUtf8(text, most).size(), whole[most]) << most;
    }
}

TEST(Base64Test, GivesBackWhatWentInAndNothingElse) {
    std::vector<std::uint8_t> bytes;
    for (int i = 0; i < 70; ++i) {
        std::string text = "before";
        AppendBase64(text, bytes);
        EXPECT_EQ(text.substr(0, 6), "before");
        text.erase(0, 6);
        const std::string whole(bytes.begin(), bytes.end());
        EXPECT_EQ(DecodeBase64(text), whole);
        EXPECT_EQ(DecodeBase64(text.substr(0, text.find('='))), whole) << "without filling";
        bytes.push_back(static_cast<std::uint8_t>(255 - 37 * i));
    }
    for (const char* text : {"YW=J", "YW J", "YWJ\n", "YW-_", "\xff"}) {
        EXPECT_FALSE(DecodeBase64(text)) << text;
    }
}

TEST(JsonTextTest, TakesOneValueAndNothingBesideIt) {
    for (const char* text : {"1", "\"a\"", "null", "{\"a\":[1,2.5,{\"b\":true}]}", " [] "}) {
        EXPECT_TRUE(ReadJson(text)) << text;
    }
    std::string why;
    for (const char* text :
         {"", " ", "{", "{}{}", "[1,]", "{'a':1}", "{\"a\":1,\"a\":2}", "// x\n1", "NaN"}) {
        EXPECT_FALSE(ReadJson(text, 64, &why)) << text;
        EXPECT_NE(std::exchange(why, {}), "") << text;
    }
    EXPECT_TRUE(ReadJson("[[[1]]]", 4));
    EXPECT_FALSE(ReadJson(std::string(100'000, '['), 64, &why));
    EXPECT_EQ(WriteJson(*ReadJson("{\"b\":0.178,\"a\":\"\\u00e5\"}")), "{\"a\":\"\u00e5\",\"b\":0.178}");
}

}  // namespace
