// ipodctl's words, what it makes of answers, and how it ends.

#include "IpodControl/ctl/CommandLine.h"
#include "IpodControl/ctl/Output.h"
#include "tests/IpodControl/FakeService.h"

namespace IpodControl {
namespace {

int Type(const std::vector<std::string>& words) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = CommandLine().Run(words);
    const std::string complaint = testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
    // One sentence, whenever it is no mere answer.
    EXPECT_LE(std::count(complaint.begin(), complaint.end(), '\n'), 1) << complaint;
    EXPECT_TRUE(status < kUsage || !complaint.empty());
    return status;
}

/// Against a service that answers everything with `result`; the last request it got becomes `request`.
int TypeTo(const std::string& result, std::vector<std::string> words, Json::Value& request) {
    const FakeService service([&](int connection) {
        for (Json::Value asked; !(asked = ReadRequest(connection)).isNull();) {
            request = asked;
            Send(connection,
                 "{\"id\":" + ToLine(asked["id"]) + ",\"jsonrpc\":\"2.0\",\"result\":" + result + "}\n");
        }
    });
    words.insert(words.begin(), {"--port", std::to_string(service.Port())});
    return Type(words);
}

TEST(CommandsTest, AnswersMakeTheExitStatus) {
    const struct {
        std::vector<std::string> words;
        const char* result;
        int status;
    } cases[] = {
        {{"start"}, "\"failure\"", kRefused},
        {{"select", "32"}, "\"browsing\"", kDone},
        {{"play"}, "null", kDone},
        {{"isIpodConnected"}, "{\"connected\":false}", kRefused},
        {{"repeat", "all"}, "{\"mode\":\"all\"}", kDone},
        {{"repeat", "all"}, "{\"mode\":\"off\"}", kRefused},
        {{"getCurrentAlbumArt"}, "{\"albumArt\":\"\"}", kRefused},
        {{"next"}, "{\"success\":5}", kNoService},
        {{"status"}, "[]", kNoService},
        {{"wait", "connected"}, "7", kNoService},
    };
    Json::Value request;
    for (const auto& each : cases)
        EXPECT_EQ(TypeTo(each.result, each.words, request), each.status) << request << each.result;
}

TEST(CommandsTest, WordsBecomeRequests) {
    const struct {
        std::vector<std::string> words;
        const char* params;
    } cases[] = {
        {{"repeat"}, "null"},
        {{"list", "--start", "-5"}, R"({"itemCount":20,"startIndex":-5})"},
        {{"next-letter", "-1"}, R"({"startIndex":-1})"},
        {{"filter", ""}, R"({"searchText":""})"},
        {{"filter", "[a,b]", "--timeout", "9"}, R"({"searchText":"[a,b]"})"},
        {{"filter", "--", "--json"}, R"({"searchText":"--json"})"},
    };
    Json::Value request;
    for (const auto& each : cases) {
        TypeTo("null", each.words, request);
        EXPECT_EQ(ToLine(request["params"]), each.params);
    }
    for (const Method& method : Methods())
        EXPECT_EQ(Type({std::string(method.name), "--help"}), kDone) << method.name;
}

TEST(CommandsTest, WhatCannotBeMeantIsUsage) {
    for (const char* line :
         {"", "explode", "next now", "shuffle yes", "select", "select 1x", "select 4294967296",
          "list --count -1", "--port 0 next", "--timeout nan next", "wait forever"}) {
        std::istringstream words(line);
        EXPECT_EQ(Type({std::istream_iterator<std::string>(words), {}}), kUsage) << line;
    }
}

}  // namespace
}  // namespace IpodControl
