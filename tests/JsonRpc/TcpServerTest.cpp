#include "JsonRpc/TcpServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "JsonRpc/Limits.h"
#include "tests/JsonRpc/RunningServer.h"

namespace {

const std::string kParseError =
    "{\"error\":{\"code\":-32700,\"message\":\"Parse error.\"},\"id\":null,\"jsonrpc\":\"2.0\"}\n";

TEST(TcpServer, BindsNumericAddressesThatAreFree) {
    for (const char* address : {"", "localhost", "--stdout", "127.0.0.1:80", "256.0.0.1"}) {
        EXPECT_FALSE(Json::Rpc::TcpServer(address, 0).Bind()) << address;
    }
    RunningServer server;
    EXPECT_FALSE(Json::Rpc::TcpServer("127.0.0.1", server.tcp.GetPort()).Bind());
}

TEST(TcpServer, EverythingIsAnsweredBeforeTheConnectionEnds) {
    RunningServer server;
    TestClient halfClosed(server);
    TestClient oversized(server);
    std::string requests;
    for (int i = 0; i < 200; ++i) {
        requests += kEcho;
    }
    halfClosed.Send(requests + "{\"unfinished\":");
    halfClosed.EndSending();
    oversized.Send(requests + "[\"" + std::string(3 * Json::Rpc::Limits::kRequestBytes, 'x'));
    for (TestClient* client : {&halfClosed, &oversized}) {
        for (int i = 0; i < 200; ++i) {
            ASSERT_EQ(client->ReadLine(), kEchoReply);
        }
        EXPECT_EQ(client->ReadLine(), kParseError);
        EXPECT_TRUE(client->SeesEnd());
    }
    EXPECT_TRUE(server.HasClients(0));
}

TEST(TcpServer, PortIsFreeAtOnceAfterAStopWithClientsConnected) {
    RunningServer server;
    const std::uint16_t port = server.tcp.GetPort();
    TestClient client(server);
    ASSERT_TRUE(client.Answers());
    server.Stop();
    EXPECT_TRUE(client.SeesEnd());
    EXPECT_TRUE(server.tcp.GetClients().empty());
    Json::Rpc::TcpServer next("127.0.0.1", port);
    EXPECT_TRUE(next.Bind() && next.Listen());
}

TEST(TcpServer, RequestsMayArriveInAnyPiecesAndBadOnesCostNoConnection) {
    RunningServer server;
    TestClient client(server);
    const std::string params = R"({"a":"}]\"{\\"})";
    for (const char c : R"({"jsonrpc":"2.0","method":"echo","id":1,"params":)" + params + "}") {
        const int round = server.rounds;
        client.Send({&c, 1});
        ASSERT_TRUE(Eventually([&] { return server.rounds > round; }));
    }
    EXPECT_EQ(client.ReadLine(), R"({"id":1,"jsonrpc":"2.0","result":)" + params + "}\n");
    for (const char* bad : {"rubbish\n", "{\"a\":\"lost quote}\n", "{]", "[1,]"}) {
        client.Send(bad);
        EXPECT_EQ(client.ReadLine(), kParseError) << bad;
        EXPECT_TRUE(client.Answers()) << bad;
    }
}

TEST(TcpServer, GreedyClientLeavesAModestOneItsTurn) {
    Json::Rpc::TcpServer tcp("127.0.0.1", 0);
    TestMethods methods(tcp);
    ASSERT_TRUE(tcp.Bind() && tcp.Listen());
    TestClient greedy(tcp.GetPort());
    TestClient modest(tcp.GetPort());
    tcp.WaitMessage(1000);
    ASSERT_EQ(tcp.GetClients().size(), 2U);
    const auto arrived = [&](std::size_t client, std::size_t bytes) {
        int count = 0;
        return Eventually([&] {
            return ioctl(tcp.GetClients().at(client), FIONREAD, &count) == 0 &&
                   count == static_cast<int>(bytes);
        });
    };
    constexpr int kRequests = 1000;
    for (int i = 0; i < kRequests; ++i) {
        greedy.Send(kEcho);
    }
    ASSERT_TRUE(arrived(0, kRequests * kEcho.size()));
    for (int round = 1; round <= 5; ++round) {
        modest.Send(kEcho);
        ASSERT_TRUE(arrived(1, kEcho.size()));
        tcp.WaitMessage(1000);
        EXPECT_EQ(methods.m_calls, round * (Json::Rpc::Limits::kTextsPerRound + 1));
        EXPECT_EQ(modest.ReadLine(), kEchoReply);
    }
}

TEST(TcpServer, DrainAfterAnOversizedRequestAnswersNothingAndEnds) {
    RunningServer server;
    TestClient other(server);
    TestClient oversized(server);
    ASSERT_TRUE(other.Answers() && oversized.Answers());
    const auto start = std::chrono::steady_clock::now();
    oversized.Send("[\"" + std::string(Json::Rpc::Limits::kRequestBytes, 'x'));
    EXPECT_EQ(oversized.ReadLine(), kParseError);
    oversized.Send("\"]" + kEcho);
    EXPECT_TRUE(oversized.SeesEnd());
    EXPECT_EQ(server.tcp.Broadcast("note\n"), 1U);
    EXPECT_EQ(other.ReadLine(), "note\n");
    // It neither stops sending nor closes, and is let go all the same.
    EXPECT_TRUE(Eventually([&] { return !oversized.Send(kEcho); }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, Json::Rpc::Limits::kDrainTime);
    EXPECT_TRUE(server.HasClients(1));
}

TEST(TcpServer, ClientsBeyondTheLimitAreClosedAtOnce) {
    RunningServer server;
    std::vector<std::unique_ptr<TestClient>> clients;
    for (std::size_t i = 0; i < Json::Rpc::Limits::kClients; ++i) {
        clients.push_back(std::make_unique<TestClient>(server));
    }
    ASSERT_TRUE(server.HasClients(Json::Rpc::Limits::kClients));
    EXPECT_TRUE(TestClient(server).SeesEnd());
    EXPECT_EQ(server.tcp.Broadcast("note\n"), Json::Rpc::Limits::kClients);
    for (const auto& client : clients) {
        EXPECT_EQ(client->ReadLine(), "note\n");
    }
    clients.pop_back();
    ASSERT_TRUE(server.HasClients(Json::Rpc::Limits::kClients - 1));
    EXPECT_TRUE(TestClient(server).Answers());
}

TEST(TcpServer, DoesNotSpinWhenDescriptorsRunOut) {
    RunningServer server;
    TestClient connected(server);
    ASSERT_TRUE(connected.Answers());
    const int lowestFree = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(lowestFree);
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    // The client's own socket takes the last one.
    const rlimit scarce{static_cast<rlim_t>(lowestFree) + 1, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &scarce), 0);

    for (int i = 0; i < 20; ++i) {
        EXPECT_TRUE(TestClient(server).SeesEnd());
    }
    EXPECT_TRUE(connected.Answers());
    const auto start = std::chrono::steady_clock::now();
    const int roundsBefore = server.rounds;
    EXPECT_TRUE(Eventually([&] { return server.rounds >= roundsBefore + 20; }));
    EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));

    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(TestClient(server).Answers());
}

}  // namespace
