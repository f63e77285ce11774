#include <gtest/gtest.h>

#include "ScenarioRunner/LineReader.h"
#include "ScenarioRunner/ScenarioParser.h"

namespace ScenarioRunner {
namespace {

std::string FaultsOf(const std::string& text) {
    std::vector<Fault> found;
    ParseScenario("a", text, found);
    std::string faults;
    for (const Fault& fault : found)
        faults += std::to_string(fault.line) + ':' + std::to_string(fault.column) + ' ' + fault.text + '\n';
    return faults;
}

TEST(ParserTest, TellsEveryFaultByLineAndColumn) {
    const std::pair<const char*, const char*> cases[] = {
        {"plug type=iap2 # a comment\n\n\tplug name=\"Anna's phone\" devices=[{\"a\": \"]\"}]\r\n", ""},
        {"plug type", "1:6 a member is written name=value\n"},
        {"plug type=iap type=stick", "1:15 \"type\" stands here twice\n"},
        {"\n  plug name=\"Anna", "2:13 this is no JSON value\n"},
        {"plug name= type=iap", "1:11 the value is missing\n"},
        {"plug type>1", "1:6 a member is given by =\n"},
        {"{\"command\":\"plug\"} x", "1:20 nothing more was expected here\n"},
        {"sleep 2 s\nsleep 2h\nsleep",
         "1:7 a time such as 500ms or 2s, at most an hour, is missing\n"
         "2:7 a time such as 500ms or 2s, at most an hour, is missing\n"
         "3:6 a time such as 500ms or 2s, at most an hour, is missing\n"},
        {"repeat 2\nsleep 1ms", "1:1 this repeat has no end\n"},
        {"repeat 2\nend\nend", "3:1 no repeat is open here\n"},
        {"expect a=1", "1:8 this must be result, error, answer, notification, call or no\n"},
        {"plug\nexpect result a=1", "2:1 no request stands before this\n"},
        {"request play\nuntil result within 2s", "2:14 what is to hold is missing\n"},
        {"expect no call play", "1:20 \"for\" and a time are missing\n"},
        {"title", "1:6 the value is missing\n"},
        {"%", "1:1 a step is missing\n"},
    };
    for (const auto& [text, faults] : cases)
        EXPECT_EQ(FaultsOf(text), faults) << text;
}

TEST(ParserTest, ChecksCommandsAgainstWhatIsThere) {
    std::vector<Fault> faults;
    const Scenario scenario =
        ParseScenario("a", "plug type=iap\nrepeat 2\n plgu\n plug tpye=iap\nend", faults);
    Json::Value help;
    ASSERT_TRUE(ParseJson(R"([{"command":"plug","members":{"type":""}}])", help));
    faults = CheckCommands(scenario.steps, help);
    ASSERT_EQ(faults.size(), 2U);
    EXPECT_EQ(faults[0].line * 100 + faults[0].column, 302U);
    EXPECT_EQ(faults[1].line * 100 + faults[1].column, 407U);
}

TEST(ParserTest, LooksIntoAnswers) {
    Json::Value whole;
    ASSERT_TRUE(ParseJson(R"({"a":{"b":[1,{"c":"text"}]},"n":2.0,"s":"","z":null})", whole));
    const std::pair<bool, std::vector<const char*>> cases[] = {
        {true,
         {"a.b[1].c=text", "a.b.length=2", "a.b[0]<2", "n=2", "n>=2", "n!=3", "s=\"\"", "z=null",
          "a.b[1].c~ex", "a.b~1", "q!=1", "a.b[2]!=1"}},
        {false,
         {"a.b={\"c\":1}", "a.b[99999999999]=1", "a[0]=1", "a.b[x]=1", "a.[=1", "n.length=1", "n<text"}}};
    for (const auto& [isHeld, conditions] : cases) {
        for (const char* condition : conditions) {
            LineReader line(condition);
            EXPECT_EQ(Holds(line.Pair(true), whole), isHeld) << condition;
        }
    }
}

}  // namespace
}  // namespace ScenarioRunner
