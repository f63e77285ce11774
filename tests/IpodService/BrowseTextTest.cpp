// What of a device's texts reaches JSON, and what a filter finds in them.

#include <glib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "IpodService/AsciiCase.h"
#include "IpodService/CaseFolding.h"
#include "IpodService/CaselessText.h"
#include "IpodService/FileCleanup.h"

namespace {

TEST(CaseFoldingTest, EachCharacterAsGlibFoldsIt) {
    CaseFolding folding;
    for (gunichar c = 1; c < 0x20000; ++c) {
        if (!g_unichar_validate(c)) {
            continue;
        }
        std::array<char, 7> utf8{};
        g_unichar_to_utf8(c, utf8.data());
        const std::unique_ptr<gchar, decltype(&g_free)> folded(g_utf8_casefold(utf8.data(), -1), g_free);
        const std::string character = utf8.data();
        const std::string expected = folded.get();
        ASSERT_EQ(folding.Fold(std::string(character).append("A").append(character)),
                  std::string(expected).append("a").append(expected))
            << std::hex << c;
    }
    EXPECT_EQ(folding.Fold(std::string(200, 'A') + "\u0390"), std::string(200, 'a') + "\u03B9\u0308\u0301");
}

TEST(CaselessPatternTest, FindsWhatFoldsToTheSame) {
    using namespace std::string_literals;
    const struct {
        std::string pattern;
        std::string name;
        bool found = true;
    } cases[] = {
        {"ÉCLAIR", "Un éclair"},
        {"любовь", "МОЯ ЛЮБОВЬ"},
        {"strasse", "HAUPTSTRAßE"},
        {"maß", "THE MASS"},
        {"maß", "mas", false},
        {"ﬁn", "FINAL"},
        {"", "É"},
        {"", ""},
        {"", "\xFF"},
        {"a", "", false},
        {"a\0b"s, "AB", false},
        {"É\0b"s, "éB", false},
        {"É\0É"s, "é\0é"s},
        // bytes are compared where one of the two is ill-formed
        {"éA", "x\xFF éa"},
        {"É", "x\xFF é", false},
        {"CAF\xE9", "Caf\xE9"},
        {"é\xFF", "É\xFF", false},
        {"caf\xC3", "CAFé"},
        {"\x89", "É"},
        {"\xC3", "E", false},
        {"ÉCOLE", "é école\xC3"},
        {"ÉCOLE", "é école\xE2\x82"},
        {"école", "ÉCOLE\xC3z", false},
        {"école", "ÉCOLE\xA9", false},
        {"É", "\xC3", false},
    };
    for (const auto& [pattern, name, found] : cases) {
        EXPECT_EQ(CaselessPattern(pattern).IsPartOf(name), found)
            << testing::PrintToString(pattern) << " in " << testing::PrintToString(name);
    }
}

TEST(AsciiCaselessPatternTest, KnowsNoLettersButAscii) {
    EXPECT_FALSE(AsciiCaselessPattern("@[").IsPartOf("`{"));
    EXPECT_TRUE(AsciiCaselessPattern("AZ").IsPartOf("az"));
    const std::string folder = testing::TempDir() + "files-" + std::to_string(getpid());
    std::filesystem::create_directory(folder);
    for (const char* name : {"/a.pLs.b", "/a.pl\u017F"}) {  // a long s, which folds to s
        std::ofstream(folder + name) << "x";
    }
    EXPECT_EQ(ListFiles(folder, ".Pls"), std::vector<std::string>{"a.pLs.b"});
    std::filesystem::remove_all(folder);
}

}  // namespace
