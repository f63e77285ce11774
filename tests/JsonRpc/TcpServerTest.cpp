#include "JsonRpc/TcpServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

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
