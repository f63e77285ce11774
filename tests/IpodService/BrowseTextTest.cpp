// The texts of browsing: what reaches JSON, what a letter or a filter finds.

#include <gtest/gtest.h>

#include "IpodService/CaselessText.h"
#include "IpodService/InitialKey.h"
#include "IpodService/Utf8Text.h"

namespace {

std::string Marks(std::size_t count) {
    std::string marks;
    for (; count > 0; --count)
        marks += "\xEF\xBF\xBD";
    return marks;
}

TEST(WellFormedUtf8, MarksEachIllFormedByteAndNothingElse) {
    struct Case {
        std::string text;
        std::size_t ill;  ///< bytes at the front to be marked; the rest stays
    };
    const Case cases[] = {
        // The first and last character of each length, and the neighbours of the surrogates.
        {"\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80\xF4\x8F\xBF"
         "\xBF",
         0},
        {"\x80z", 1},
        {"\xFFz", 1},
        {"\xC3z", 1},
        {"\xE2\x82z", 2},
        {"\xC1\xBFz", 2},
        {"\xE0\x9F\xBFz", 3},
        {"\xF0\x8F\xBF\xBFz", 4},  // overlong
        {"\xED\xA0\x80z", 3},
        {"\xF4\x90\x80\x80z", 4},
        {"\xF5\x80\x80\x80z", 4},
        {"\xE2\x82\xC3\xA9", 2},  // a whole character straight behind half of one
    };
    for (const Case& c : cases)
        EXPECT_EQ(WellFormedUtf8("a" + c.text, 256), "a" + Marks(c.ill) + c.text.substr(c.ill))
            << testing::PrintToString(c.text);
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

TEST(InitialKey, SkipsALeadingArticle) {
    struct Case {
        const char* name;
        char key;
    };
    const Case cases[] = {{"abba", 'a'}, {"The Beatles", 'B'}, {"tHE who", 'w'},
                          {"The ", 'T'}, {"Them", 'T'},        {"\xC3\x89tude", '\xC3'}};
    for (const Case& c : cases)
        EXPECT_EQ(InitialKey(c.name), static_cast<unsigned char>(c.key)) << c.name;
    EXPECT_EQ(InitialKey(""), std::nullopt);
}

TEST(CaselessPattern, IgnoresTheCaseOfAsciiLettersOnly) {
    EXPECT_TRUE(CaselessPattern("bEAt").IsPartOf("The BeaTles"));
    EXPECT_TRUE(CaselessPattern("").IsPartOf(""));
    EXPECT_FALSE(CaselessPattern("them").IsPartOf("The"));
    EXPECT_FALSE(CaselessPattern("[").IsPartOf("{"));
    EXPECT_FALSE(CaselessPattern("\xC3\xA9").IsPartOf("\xC3\x89tude"));
}

}  // namespace
