// ipodctl's words, what it makes of answers, and how it ends.

#include <algorithm>
#include <cstdlib>
#include <sstream>

#include "IpodControl/commands/CommandLine.h"
#include "IpodControl/commands/Method.h"
#include "IpodControl/commands/Output.h"
#include "ServiceUtil/JsonText.h"
#include "tests/IpodControl/FakeService.h"

namespace IpodControl {
namespace {

std::string printed, complaint;  // by the last command
Json::Value request;             // that the last service got

int Type(const std::vector<std::string>& words) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int status = RunCommandLine(words);
    complaint = testing::internal::GetCapturedStderr();
    printed = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(status < kUsage || !complaint.empty());
    return status;
}

std::vector<std::string> Words(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

std::string AnswerTo(const Json::Value& asked, const std::string& result) {
    return "{\"id\":" + WriteJson(asked["id"]) + ",\"jsonrpc\":\"2.0\",\"result\":" + result + "}";
}

/// Against a service that answers everything with `result`(request); the last request it got becomes
/// `request`.
int TypeTo(const std::function<std::string(const Json::Value&)>& result, std::vector<std::string> words) {
    request = {};
    const FakeService service([&](int connection) {
        const auto answer = [&](const Json::Value& asked) {
            // The last one where something is refused is why.
            request = request.isNull() || asked["method"] != "isIpodConnected" ? asked : request;
            return AnswerTo(asked, result(asked));
        };
        for (Json::Value asked; !(asked = ReadRequest(connection)).isNull();) {
            std::string line = asked.isArray() ? "" : answer(asked);
            for (Json::ArrayIndex i = 0; asked.isArray() && i < asked.size(); ++i) {
                line += (i == 0 ? "[" : ",") + answer(asked[i]) + (i + 1 == asked.size() ? "]" : "");
            }
            Send(connection, line + "\n");
        }
    });
    words.insert(words.begin(), {"--port", std::to_string(service.Port())});
    const int status = Type(words);
    // One sentence, whenever it is no mere answer.
    EXPECT_LE(std::count(complaint.begin(), complaint.end(), '\n'), 1) << complaint;
    return status;
}

int TypeTo(const char* result, const std::vector<std::string>& words) {
    return TypeTo([result](const Json::Value&) { return result; }, words);
}

TEST(CommandsTest, EveryMethodIsAskedAndJudged) {
    const struct {
        const char *words, *params, *done, *refused;
    } cases[] = {
        // in the order of the methods' names
        {"shuffle off", R"({"enable":false})", R"({"enabled":false})", R"({"enabled":true})"},
        {"exit", "null", R"("success")", R"("failure")"},
        {"fast-forward on", R"({"enable":true})", R"({"enabled":true})", R"({"enabled":false})"},
        {"filter a", R"({"searchText":"a"})", R"("success")", R"("failure")"},
        {"list --count 3", R"({"itemCount":3,"startIndex":0})", "{}", "null"},
        {"getCurrentAlbumArt", "null", R"({"albumArt":"/9j/"})", R"({"albumArt":""})"},
        {"get-current-album-art-delayed", "null", R"({"success":true})", R"({"success":false})"},
        {"track", "null", R"({"trackInfo":{}})", "null"},
        {"getHasPlayableData", "null", R"({"hasPlayableData":true})", R"({"hasPlayableData":false})"},
        {"next-letter 4", R"({"startIndex":4})", R"({"itemIndex":0})", R"({"itemIndex":-1})"},
        {"previous-letter", R"({"startIndex":0})", R"({"itemIndex":9})", R"({"itemIndex":-1})"},
        {"get-repeat-mode", "null", R"({"mode":"off"})", "null"},
        {"songs", "null", R"({"categoryItems":[]})", "null"},
        {"is-ipod-connected", "null", R"({"connected":true})", R"({"connected":false})"},
        {"isShuffleEnabled", "null", R"({"enabled":true})", R"({"enabled":false})"},
        {"isTrackPaused", "null", R"({"isPaused":true})", R"({"isPaused":false})"},
        {"next", "null", R"({"success":true})", R"({"success":false})"},
        {"pause", "null", R"({"success":true})", R"({"success":false})"},
        {"play", "null", "null", R"({"success":false})"},
        {"play-first", "null", R"({"success":true})", R"({"success":false})"},
        {"playPause", "null", R"({"success":true})", R"({"success":false})"},
        {"previous", "null", R"({"success":true})", "null"},
        {"reset", "null", R"({"resetSuccess":true})", R"({"resetSuccess":false})"},
        {"rewind off", R"({"enable":false})", R"({"enabled":true})", R"({"enabled":false})"},
        {"back", "null", R"("success")", R"("failure")"},
        {"select 4294967295", R"({"itemId":4294967295})", R"("browsing")", R"("failure")"},
        {"repeat all", R"({"mode":"all"})", R"({"mode":"all"})", R"({"mode":"off"})"},
        {"start", "null", R"("success")", R"("failure")"},
        {"stop", "null", R"("success")", R"("failure")"},
    };
    ASSERT_EQ(std::size(cases), Methods().size());
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        const auto& each = cases[i];
        EXPECT_EQ(TypeTo(each.done, Words(each.words)), kDone) << each.words;
        EXPECT_EQ(request["method"], std::string(Methods()[i].name));
        EXPECT_EQ(WriteJson(request["params"]), each.params) << each.words;
        EXPECT_EQ(TypeTo(each.refused, Words(each.words)), kRefused) << each.words;
        EXPECT_NE(printed, "\n") << each.words;
        EXPECT_EQ(TypeTo("5", Words(each.words)), kNoService) << each.words;
    }
    EXPECT_EQ(TypeTo("[]", {"status"}), kNoService);
    EXPECT_EQ(TypeTo("7", {"wait", "connected"}), kNoService);
}

/// A root with Songs and nothing else, and 2500 songs; item ids are their positions, and pages go round.
/// Whenever a page has been read, another client opens Songs.
struct SongLibrary {
    Json::Value Answer(const std::string& method, const Json::Value& params) {
        Json::Value result;
        if (method == "resetBrowseList") {
            result["resetSuccess"] = isRoot = true;
        } else if (method == "selectBrowseItem") {
            played = isRoot ? played : params["itemId"].asInt();
            result = std::exchange(isRoot, false) ? "browsing" : "success";
        } else {
            pages += method == "getBrowseList" ? 1 : 0;
            const int start = params["startIndex"].asInt(), count = params["itemCount"].asInt();
            const int total = isRoot ? 1 : 2500;
            for (int i = start; i < start + (isRoot ? 1 : count); ++i) {
                const std::string name = i == 5 ? "LANTERN" : "x" + std::to_string(i == 8 ? 7 : i % total);
                Json::Value& item = result["categoryItems"].append(Json::objectValue);
                item["itemId"] = i % total;
                item["itemName"] = isRoot ? "Songs" : i == 1000 ? "Lantern" : name;
            }
            result["totalCount"] = total;
            result["currIndex"] = start;
            result["isLastCategory"] = !isRoot;
            isRoot = false;
        }
        return result;
    }

    bool isRoot = true;
    int pages = 0, played = -1;
};

TEST(CommandsTest, NamesLeadThroughTheLibrary) {
    const struct {
        const char* words;
        int status, played, pages;
        const char* text;
    } cases[] = {
        {"browse --play Songs Lantern", kDone, 1000, 3, "playing Lantern\n"},
        {"browse --play songs lanterN", kDone, 5, 4, "playing LANTERN\n"},
        {"browse --play Songs", kDone, 0, 2, "playing x0\n"},
        {"browse --play Songs x7", kDone, 7, 2, "playing x7\n"},
        {"browse --play Songs x7#2", kDone, 8, 4, "playing x7\n"},
        {"browse --play Songs x7#3", kRefused, -1, 4, "near it: \"x7\", \"x73\", \"x703\".\n"},
        {"complete -- browse Songs X249", kDone, -1, 4, "x2498\nx2499\n"},
        {"browse Songs", kDone, -1, 4, "2499  x2499\n"},
        {"browse Songs Lanter", kRefused, -1, 4, "near it: \"LANTERN\", \"Lantern\".\n"},
        {"browse --play Songs Lantern x1", kRefused, -1, 3, "nothing below it.\n"},
        // A list does not begin again at its end.
        {"list --start 2498 --count 5", kDone, -1, 2, "(2 of 2500, from 2498)\n"},
        {"list --start 2509", kDone, -1, 2, "(0 of 2500, from 2509)\n"},
        {"list --start -1 --count 2", kDone, -1, 1, "(2 of 2500, from -1)\n"},
    };
    for (const auto& each : cases) {
        SongLibrary library{.isRoot = each.words[0] != 'l'};
        const auto answer = [&](const Json::Value& asked) {
            return WriteJson(library.Answer(asked["method"].asString(), asked["params"]));
        };
        EXPECT_EQ(TypeTo(answer, Words(each.words)), each.status) << each.words;
        EXPECT_TRUE((printed + complaint).ends_with(each.text)) << printed << complaint;
        EXPECT_EQ(std::pair(library.played, library.pages), std::pair(each.played, each.pages)) << each.words;
    }
}

TEST(CommandsTest, WithoutAPlayerThatIsTheReason) {
    for (const char* line : {"pause", "list", "browse Songs", "art /nowhere", "shuffle on", "stop"}) {
        const auto answer = [](const Json::Value& asked) {
            const std::string method = asked["method"].asString();
            return method == "isIpodConnected"   ? R"({"connected":false})"
                   : method == "resetBrowseList" ? R"({"resetSuccess":false})"
                   : method == "enableShuffle"   ? R"({"enabled":false})"
                   : method == "stop"            ? R"("failure")"
                   : method == "getBrowseList"   ? "null"
                                                 : R"({"success":false,"albumArt":""})";
        };
        EXPECT_EQ(TypeTo(answer, Words(line)), kRefused) << line;
        EXPECT_EQ(complaint, "ipodctl: no player is connected.\n") << line;
    }
}

TEST(CommandsTest, TellsAboutItselfAndWhatCanBeTyped) {
    const struct {
        std::vector<std::string> words;
        const char* printed;
    } cases[] = {
        {{"help"}, "\nExit status: 0 done;"},
        {{"help", "browse"}, "Walk the library"},
        {{"help", "playPause"}, "Play when paused"},
        {{"complete", "--", "fa"}, "fast-forward\t"},
        {{"complete", "--", "--json", "--host", "x", "repeat", "a"}, "all\n"},
        {{"complete", "--", "watch", "--co"}, "--count\t"},
        {{"complete", "--", "help", "bro"}, "browse\t"},
        {{"completion", "bash"}, "complete -F _ipodctl ipodctl\n"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(Type(each.words), kDone);
        EXPECT_NE(printed.find(each.printed), std::string::npos) << each.words.back() << ": " << printed;
    }
    EXPECT_EQ(Type({"help", "explode"}), kUsage);
    Type({"complete", "--", "repeat", "--port", ""});
    EXPECT_EQ(printed, "") << "a number is to come";
}

TEST(CommandsTest, TheServiceMayBeNamedByTheEnvironment) {
    const FakeService service([](int connection) {
        Send(connection, AnswerTo(ReadRequest(connection), R"({"success":true})") + "\n");
    });
    setenv("IPODCTL_PORT", std::to_string(service.Port()).c_str(), 1);
    EXPECT_EQ(Type({"next"}), kDone) << complaint;
    setenv("IPODCTL_HOST", "no host", 1);
    EXPECT_EQ(Type({"next"}), kNoService);
    EXPECT_EQ(Type({"--host", "127.0.0.1", "next"}), kDone) << complaint;
    unsetenv("IPODCTL_HOST");
    unsetenv("IPODCTL_PORT");
}

TEST(CommandsTest, WatchWaitsForAServiceThatHasAnsweredToComeBack) {
    int clients = 0;
    const FakeService service([&clients](int connection) {
        Send(connection, AnswerTo(ReadRequest(connection), "{}") + "\n{\"method\":\"come" +
                             std::to_string(++clients) + "\"}\n");
    });
    EXPECT_EQ(Type({"--port", std::to_string(service.Port()), "watch", "--count", "2"}), kDone);
    EXPECT_NE(printed.find("come2"), std::string::npos) << printed;
    EXPECT_TRUE(complaint.ends_with(" is back.\n")) << complaint;
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
    for (const auto& each : cases) {
        TypeTo("null", each.words);
        EXPECT_EQ(WriteJson(request["params"]), each.params);
    }
    for (const Method& method : Methods())
        EXPECT_EQ(Type({std::string(method.name), "--help"}), kDone) << method.name;
}

TEST(CommandsTest, WhatCannotBeMeantIsUsage) {
    for (const char* line :
         {"", "explode", "next now", "shuffle yes", "select", "select 1x", "select 4294967296",
          "list --count -1", "--port 0 next", "--timeout nan next", "wait forever"}) {
        EXPECT_EQ(Type(Words(line)), kUsage) << line;
    }
}

}  // namespace
}  // namespace IpodControl
