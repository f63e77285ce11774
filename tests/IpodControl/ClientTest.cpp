#include "IpodControl/Client.h"

#include <sys/resource.h>

#include "IpodControl/terminal/Connector.h"
#include "tests/IpodControl/FakeService.h"

namespace IpodControl {
namespace {

constexpr std::chrono::milliseconds kShort{200};
constexpr std::chrono::milliseconds kLong{20'000};

TEST(ClientTest, AnswersComeInOrderAndInAnyPieces) {
    // An answer that was given up, a blank line, notifications around, no result at all.
    const std::string text = R"({"id":999,"jsonrpc":"2.0","result":1}

{"jsonrpc":"2.0","method":"a"}
[{"id":1,"jsonrpc":"2.0","result":"f\u00fcr"},{"id":2,"jsonrpc":"2.0"}]
{"jsonrpc":"2.0","method":"b","params":{"n":7}}
)";
    const FakeService service([&text](int connection) {
        ReadRequest(connection);
        for (const char& c : text)
            Send(connection, {&c, 1});
        while (!ReadRequest(connection).isNull()) {
        }
    });
    Client client({"127.0.0.1", service.Port()}, kLong);
    const auto replies = client.CallAll({{"one"}, {"two"}});
    EXPECT_EQ((*replies)[0].result, "f\u00fcr");
    EXPECT_FALSE((*replies)[1].hasResult);
    const auto second = client.AwaitNotification("b", In(kLong));
    ASSERT_TRUE(second && *second);
    EXPECT_EQ((*second)->Params()["n"], 7);
}

// Whatever listens there: the caller is told in time, and told what it is.
TEST(ClientTest, WhatIsNoServiceIsToldInTime) {
    const struct {
        ProblemKind kind;
        std::string sent;
        bool goesOn = false;
    } cases[] = {
        {ProblemKind::NotTheService, std::string("\0\1\2\xff\xfe", 5)},
        {ProblemKind::NotTheService, "{\"id\":1,\"method\":\"x\",\"jsonrpc\":\"2.0\"}\n"},
        {ProblemKind::NotTheService, "{\"id\":1,\"result\":null,\"error\":\"no such method\"}\n"},
        {ProblemKind::NotTheService, std::string(100'000, '[') + "\n"},
        {ProblemKind::NotTheService, "[" + std::string(4'100'000, ',') + "]\n"},
        {ProblemKind::NotTheService, "[\"" + std::string(1 << 20, 'x'), true},
        {ProblemKind::Closed, "{\"id\":"},
        {ProblemKind::TimedOut, "{\"jsonrpc\":\"2.0\",\"method\":\"a\"}\n", true},
        {ProblemKind::TimedOut, " ", true},
    };
    for (const auto& each : cases) {
        const FakeService service([&each](int connection) {
            ReadRequest(connection);
            while (Send(connection, each.sent) && each.goesOn) {
            }
        });
        Client client({"127.0.0.1", service.Port()}, each.kind == ProblemKind::TimedOut ? kShort : kLong);
        const auto reply = client.Call("status");
        ASSERT_FALSE(reply) << each.sent.substr(0, 40);
        EXPECT_EQ(reply.Why().kind, each.kind) << reply.Why().text;
    }
}

TEST(ClientTest, AViewThatCannotWaitForItsConnectionIsToldSo) {
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    PlayerView::Connector connector;
    const auto started = connector.Start({"127.0.0.1", 1}, kShort);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_FALSE(started);
    EXPECT_FALSE(connector.IsRunning()) << "it would connect for ever";
}

}  // namespace
}  // namespace IpodControl
