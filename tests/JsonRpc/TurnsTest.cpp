// Who is served when. The tests are the server's thread, so that each WaitMessage is one turn.

#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "tests/JsonRpc/RunningServer.h"

namespace {

using Clock = std::chrono::steady_clock;
using Numbers = std::vector<int>;

constexpr int kShare = Json::Rpc::Limits{}.turnRequests;

/// Long enough for a share of quick requests on a machine that is busy elsewhere.
constexpr std::chrono::milliseconds kTurnTime{100};

Json::Rpc::Limits ShortTurns() {
    Json::Rpc::Limits limits;
    limits.turnTime = limits.quickTurn = kTurnTime;
    limits.batchReplyBytes = 100000;
    return limits;
}

std::string Call(int caller, const std::string& method = "echo", const std::string& more = "") {
    return "{\"jsonrpc\":\"2.0\",\"method\":\"" + method +
           "\",\"id\":1,\"params\":{\"caller\":" + std::to_string(caller) + more + "}}";
}

std::string Slow(int caller) {
    return Call(caller, "sleep", ",\"ms\":" + std::to_string(kTurnTime.count() + 1));
}

std::string Batch(const std::string& request, int count) {
    std::string batch = "[" + request;
    for (int i = 1; i < count; ++i) {
        batch += "," + request;
    }
    return batch + "]";
}

class TurnsTest : public testing::Test {
  protected:
    TurnsTest() {
        kServerThread.Assert();
        EXPECT_TRUE(m_tcp.Bind() && m_tcp.Listen());
        m_tcp.SetPauseTest([this] { return m_pauseAfter >= 0 && m_methods.calls >= m_pauseAfter; });
        for (int caller = 0; caller < 2; ++caller) {
            Connect();
            // Has had a turn, and a short one.
            m_clients.back()->Send(Call(caller));
            Turn();
            m_clients.back()->ReadLine();
        }
        m_methods.callers.clear();
        m_methods.calls = 0;
    }

    void Connect() {
        m_clients.push_back(std::make_unique<TestClient>(m_tcp.GetPort()));
        Turn();
    }

    void Turn(int count = 1) {
        kServerThread.Assert();
        for (int i = 0; i < count; ++i) {
            m_tcp.WaitMessage(1000);
        }
    }

    /// Sends and waits until the bytes are at the server's end.
    void Send(std::size_t client, const std::string& bytes) {
        m_clients[client]->Send(bytes);
        int count = 0;
        EXPECT_TRUE(WaitUntil([&] {
            return ioctl(m_tcp.GetClients().at(client), FIONREAD, &count) == 0 &&
                   count == static_cast<int>(bytes.size());
        }));
    }

    /// How many requests of client 0 and 1 were served since the last call.
    Numbers Served() {
        Numbers counts{0, 0};
        for (const int caller : std::exchange(m_methods.callers, {})) {
            ++counts[static_cast<std::size_t>(caller)];
        }
        return counts;
    }

    Json::Rpc::TcpServer m_tcp{"127.0.0.1", 0, ShortTurns()};
    TestMethods m_methods{m_tcp};
    int m_pauseAfter = -1;
    std::vector<std::unique_ptr<TestClient>> m_clients;
};

TEST_F(TurnsTest, ClientsTakeTurnsOfABoundedShare) {
    std::string many;
    for (int i = 0; i < 4 * kShare; ++i) {
        many += Call(0);
    }
    Send(0, many);
    for (int round = 0; round < 3; ++round) {
        Send(1, Call(1));
        Turn(2);
        EXPECT_EQ(Served(), (Numbers{kShare, 1}));
    }
}

TEST_F(TurnsTest, SlowRequestsEndATurnByItsTime) {
    Send(0, Slow(0) + Slow(0) + Slow(0));
    Turn();
    Send(1, Slow(1) + Slow(1));
    Turn(4);
    EXPECT_EQ(m_methods.callers, (Numbers{0, 0, 1, 1, 0})) << "one a turn; who was slow twice waits";
}

TEST_F(TurnsTest, WhoAsksForLittleWaitsForOneOfThoseWhoAskForMuch) {
    for (int newcomer = 2; newcomer < 6; ++newcomer) {
        Connect();
    }
    for (std::size_t newcomer = 2; newcomer < 6; ++newcomer) {
        Send(newcomer, Slow(static_cast<int>(newcomer)));
    }
    Numbers expected;
    for (const int newcomer : {2, 3, 4, 5}) {
        Send(1, Call(1));
        Turn(2);
        expected.insert(expected.end(), {1, newcomer});
    }
    EXPECT_EQ(m_methods.callers, expected);
}

TEST_F(TurnsTest, BatchIsOneTurnUpToTheShareAndGoesOnInTheNext) {
    Send(0, Batch(Slow(0), 3) + Batch(Call(0), kShare + 5));
    Turn();
    EXPECT_EQ(m_methods.callers, (Numbers{0, 0, 0})) << "whatever the time";
    Send(1, Call(1) + Slow(1));
    Turn(2);
    EXPECT_EQ(Served(), (Numbers{3 + kShare, 2}));
    Send(1, Call(1));
    Turn(3);
    EXPECT_EQ(Served(), (Numbers{5, 1}));
    for (const int size : {3, kShare + 5}) {
        const std::string replies = m_clients[0]->ReadLine();
        EXPECT_EQ(std::count(replies.begin(), replies.end(), '{'), 2 * size) << "in one piece";
    }
}

TEST_F(TurnsTest, OwnersPauseEndsATurnBetweenTwoRequestsAndCloseAnswersTheRest) {
    kServerThread.Assert();
    Send(0, Call(0) + Call(0));
    m_pauseAfter = 1;
    Turn();
    EXPECT_EQ(m_methods.calls, 1);
    m_pauseAfter = -1;
    Turn();
    EXPECT_EQ(m_methods.calls, 2);

    Send(0, Call(0));
    Turn();
    Send(1, Batch("{\"jsonrpc\":\"2.0\",\"method\":\"echo\",\"id\":1}", 3));
    m_pauseAfter = 4;
    Turn();
    m_tcp.Close();
    EXPECT_LE(m_methods.calls, 4);
    const std::string failed =
        R"({"error":{"code":-32603,"message":"Internal error."},"id":1,"jsonrpc":"2.0"})";
    const std::string done = kEchoReply.substr(0, kEchoReply.size() - 1);
    const std::string reply = m_clients[1]->ReadLine();
    EXPECT_TRUE(reply == "[" + done + "," + failed + "," + failed + "]\n" ||
                reply == "[" + done + "," + done + "," + failed + "]\n")
        << reply;
    EXPECT_TRUE(m_clients[1]->SeesEnd());
}

TEST_F(TurnsTest, BatchStaysWithinItsLimits) {
    const std::string fill = Call(0, "fill", ",\"size\":30000");
    Send(0, Batch(fill, 6));
    Turn();
    const std::string reply = m_clients[0]->ReadLine();
    EXPECT_EQ(m_methods.calls, 4);
    EXPECT_EQ(reply.size() / 30000, 4U);
    EXPECT_NE(reply.find("Internal error"), reply.rfind("Internal error")) << "for two of them";

    const int most = static_cast<int>(Json::Rpc::Limits{}.batchRequests);
    for (const std::string& refused : {Batch("{}", most + 1), std::string("[]")}) {
        Send(0, refused);
        Turn();
        EXPECT_EQ(
            m_clients[0]->ReadLine(),
            R"({"error":{"code":-32600,"message":"Invalid JSON-RPC request."},"id":null,"jsonrpc":"2.0"})"
            "\n");
    }
    Send(0, Batch("{}", most));
    Turn(most / kShare);
    EXPECT_EQ(m_clients[0]->ReadLine().front(), '[');
}

TEST_F(TurnsTest, WakeEndsTheNextSleepAndNoMore) {
    kServerThread.Assert();
    m_tcp.Wake();
    const auto start = Clock::now();
    m_tcp.WaitMessage(-1);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(5));
    const auto asleep = Clock::now();
    m_tcp.WaitMessage(50);
    EXPECT_GE(Clock::now() - asleep, std::chrono::milliseconds(50)) << "a wake-up is used up";
}

}  // namespace
