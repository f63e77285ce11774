// The steps of a scenario against a service and a control socket that do what the steps themselves say.
#include "ScenarioRunner/Runner.h"

#include <poll.h>
#include <sys/un.h>

#include "IpodControl/Message.h"
#include "ScenarioRunner/ScenarioParser.h"
#include "tests/DeviceSimulator/ScratchFolder.h"
#include "tests/IpodControl/FakeService.h"

namespace ScenarioRunner {
namespace {

using IpodControl::FakeService;
using IpodControl::ToLine;

void Tell(int connection, const Json::Value& messages) {
    for (const Json::Value& message : messages) {
        IpodControl::Send(connection, ToLine(message) + "\n");
    }
}

/// "fail" brings an error, "vanish" the connection's end, anything else the number of the requests so far;
/// the members "before" and "after" are notifications, sent on either side of the answer.
void ActAsService(int connection) {
    int count = 0;
    for (Json::Value asked; !(asked = IpodControl::ReadRequest(connection)).isNull();) {
        if (asked["method"] == "vanish") {
            return;
        }
        const std::string result = R"("result":{"count":)" + std::to_string(++count) + "}}\n";
        const char* const error = "\"error\":{\"code\":-32000,\"message\":\"it is broken\"}}\n";
        Tell(connection, asked["params"].get("before", {}));
        IpodControl::Send(connection, "{\"id\":" + ToLine(asked["id"]) + "," +
                                          (asked["method"] == "fail" ? error : result));
        Tell(connection, asked["params"].get("after", {}));
    }
}

/// "call" becomes a call that the service has made; one that runs has ended when it has been looked at.
struct Control {
    Json::Value Answer(Json::Value asked) {
        const std::string command = asked["command"].asString();
        Json::Value answer;
        answer["ok"] = command != "refuse";
        answer["n"] = ++commands;
        if (command == "call") {
            asked["number"] = Json::UInt64{calls.size() + 1};
            calls.append(asked);
        } else if (command == "calls") {
            answer["next"] = Json::UInt64{calls.size() + 1};
            answer["calls"] = Since(asked);
        } else if (command == "wait" && Since(asked).empty()) {
            answer["ok"] = false;
            poll(nullptr, 0, asked["timeout"].asInt());
        }
        for (Json::Value& call : calls) {
            const bool isSeen = command == "calls" && asked["limit"].isNull();
            call["result"] = isSeen && call["running"] == true ? Json::Value(7) : call["result"];
            call["running"] = call["running"] == true && !isSeen;
        }
        return answer;
    }
    Json::Value Since(const Json::Value& asked) const {
        Json::Value list(Json::arrayValue);
        for (const Json::Value& call : calls) {
            if (call["name"] == asked["call"] && call["number"].asUInt64() >= asked["since"].asUInt64()) {
                list.append(call);
            }
        }
        return list;
    }

    Json::Value calls{Json::arrayValue};
    int commands = 0;
};

/// The lines that were taken, with + or -, and how the file ended: "." at its end, "!" before.
class Marks : public Report {
  public:
    void Begin(const Scenario&) override {}
    void Tell(const Heading&) override {}
    void Tell(const Step& step, const StepResult& result) override {
        text += std::to_string(step.line) + (result.isOk ? '+' : '-');
    }
    void End(const Scenario&, const Summary& summary) override { text += summary.isWhole ? '.' : '!'; }

    std::string text;
};

std::string Take(const std::string& steps, RunOptions options) {
    const DeviceSimulator::ScratchFolder folder;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = folder.Path() / "control";
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const auto actAsControl = [](int connection) {
        Control control;
        for (Json::Value asked; !(asked = IpodControl::ReadRequest(connection)).isNull();) {
            IpodControl::Send(connection, ToLine(control.Answer(asked)) + "\n");
        }
    };
    const FakeService control(actAsControl, listener);
    const FakeService service(ActAsService);
    Session session;
    EXPECT_TRUE(session.Connect({"127.0.0.1", service.Port()}, path, {}));
    std::vector<Fault> faults;
    const Scenario scenario = ParseScenario("a", steps, faults);
    EXPECT_TRUE(faults.empty()) << steps;
    Marks marks;
    const bool allHeld = Runner(session, marks, options).Run(scenario);
    EXPECT_EQ(allHeld, marks.text.find_first_of("-!") == std::string::npos) << steps;
    return marks.text;
}

struct Case {
    std::string steps;
    const char* marks;
    RunOptions options = {};
};

void TakeAll(const std::vector<Case>& cases) {
    for (const Case& each : cases) {
        EXPECT_EQ(Take(each.steps, each.options), each.marks) << each.steps;
    }
}

TEST(RunnerTest, EventsCountFromTheFirstStepOfTheirGroup) {
    const std::string three =
        R"(request say before=[{"method":"a","params":{"n":1}},{"method":"b"},{"method":"a","params":{"n":2}}])";
    TakeAll({
        {three + "\nrequest say\nexpect notification a n=1\nexpect notification a n=2\nexpect notification b",
         "1+2+3+4+5+."},
        {three + "\nexpect notification a n=2\nexpect notification b\nexpect notification a within 20ms",
         "1+2+3+4-!"},
        {three + "\nexpect result count>0\nrequest say\nexpect notification b within 20ms", "1+2+3+4-!"},
        {three + "\nexpect no notification a n=3 for 20ms\nexpect no notification a n=2 for 20ms", "1+2+3-!"},
        {"repeat 2\n" + three + "\nexpect notification a n=1\nend\nexpect notification b", "2+3+2+3+5+."},
        {"request say after=[{\"method\":\"a\"}]\nexpect notification a", "1+2+."},
        {"call name=P\nrequest say\nexpect call P\nexpect call P within 20ms", "1+2+3+4-!"},
        {"call name=P running=true\nexpect call P result=7", "1+2+."},
        {"call name=P\nexpect answer n>0\nrequest say\nexpect no call P for 20ms", "1+2+3+4+."},
        {"call name=P\nexpect no call Q for 20ms\nexpect no call P for 20ms", "1+2+3-!"},
    });
}

TEST(RunnerTest, WhatFailsEndsTheFileUnlessItIsExpected) {
    TakeAll({
        {"request fail\nrequest say", "1-!"},
        {"request fail\nrequest say", "1-2+.", {1, true}},
        {"request fail\nexpect error code=-32000 message~broken", "1+2+."},
        {"request say\nexpect error", "1+2-!"},
        {"refuse\nexpect error\nrequest fail\nexpect error code<0", "1+2+3+4+."},
        {"refuse\nexpect error ok=false", "1+2+."},
        {"refuse\nexpect error\nexpect answer ok=false", "1+2+3-!"},
        {"request vanish\nrequest say", "1-!", {1, true}},
        {"sleep 1ms\nrepeat 0\nrequest say\nend\nuntil result count=1 within 60s", "1+5-!"},
    });
}

TEST(RunnerTest, UntilAsksAgainAsLongAsPatienceLasts) {
    const auto end = IpodControl::In(std::chrono::seconds(30));
    TakeAll({
        {"request say\nrefuse\nexpect error\nuntil result count>=4", "1+2+3+4+."},
        {"call\nrequest say\nuntil answer n>=4 within 60s", "1+2+3+."},
        {"request say\nuntil result count=0 within 60s", "1+2-!", {0.001}},
        {"request say\nexpect notification a within 60s", "1+2-!", {0.001}},
        {"request say\nuntil result count=9 within 20ms", "1+2+.", {500}},
    });
    EXPECT_LT(std::chrono::steady_clock::now(), end);
}

}  // namespace
}  // namespace ScenarioRunner
