// What libdevicemanager.so offers to whoever is linked to it.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>

namespace {

/// What matches the first group of `pattern` in `text`.
std::set<std::string> Names(const std::string& text, const std::string& pattern) {
    const std::regex expression(pattern);
    std::set<std::string> names;
    for (std::sregex_iterator match(text.begin(), text.end(), expression), end; match != end; ++match) {
        names.insert((*match)[1]);
    }
    return names;
}

std::string Symbols() {
    std::FILE* const pipe = popen("nm -DC --defined-only " DEVICE_MANAGER_LIBRARY, "r");
    std::string symbols;
    for (int c = 0; (c = std::fgetc(pipe)) != EOF;) {
        symbols += static_cast<char>(c);
    }
    EXPECT_EQ(pclose(pipe), 0);
    return symbols;
}

TEST(ExportsTest, AreTheInterface) {
    std::ifstream header(DEVICE_MANAGER_HEADER);
    const std::string text{std::istreambuf_iterator<char>(header), {}};
    const std::string symbols = Symbols();
    const auto functions = Names(symbols, " T (e\\w+)\n");
    EXPECT_EQ(functions.size(), 41U);
    EXPECT_EQ(functions, Names(text, "\nu32 (e\\w+)\\("));
    const auto others = Names(symbols, " [A-Za-z] (?!e\\w+\n)([^\n]*)\n");
    EXPECT_EQ(others, std::set<std::string>());
}

}  // namespace
