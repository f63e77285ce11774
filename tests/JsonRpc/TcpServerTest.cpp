#include "JsonRpc/TcpServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include "JsonRpc/Limits.h"
#include "tests/JsonRpc/RunningServer.h"

namespace {

const std::string kEcho = "{\"jsonrpc\":\"2.0\",\"method\":\"echo\",\"id\":1}";
const std::string kEchoReply = "{\"id\":1,\"jsonrpc\":\"2.0\",\"result\":null}\n";
const std::string kParseError =
    "{\"error\":{\"code\":-32700,\"message\":\"Parse error.\"},\"id\":null,\"jsonrpc\":\"2.0\"}\n";

TEST(TcpServer, BindsNumericAddressesThatAreFree) {
    for (const char* address : {"", "localhost", "--stdout", "127.0.0.1:80", "256.0.0.1"}) {
        EXPECT_FALSE(Json::Rpc::TcpServer(address, 0).Bind()) << address;
    }
    Json::Rpc::TcpServer first("127.0.0.1", 0);
    EXPECT_FALSE(first.Listen());
    ASSERT_TRUE(first.Bind());
    EXPECT_FALSE(first.Bind());
    ASSERT_TRUE(first.Listen());
    EXPECT_FALSE(Json::Rpc::TcpServer("127.0.0.1", first.GetPort()).Bind());
}

TEST(TcpServer, PortIsFreeAtOnceAfterAStopWithClientsConnected) {
    auto server = std::make_unique<RunningServer>();
    const std::uint16_t port = server->tcp.GetPort();
    TestClient client(*server);
    ASSERT_TRUE(client.Answers());
    server->Stop();
    EXPECT_TRUE(client.SeesEnd());
    EXPECT_TRUE(server->tcp.GetClients().empty());
    server->tcp.Close();
    Json::Rpc::TcpServer next("127.0.0.1", port);
    EXPECT_TRUE(next.Bind() && next.Listen());
}

TEST(TcpServer, AnswersHoweverTheRequestsArrive) {
    RunningServer server;
    TestClient client(server);
    for (const char c : kEcho) {
        client.Send({&c, 1});
    }
    EXPECT_EQ(client.ReadLine(), kEchoReply);

    std::string many;
    for (int i = 0; i < 1000; ++i) {
        many += i % 2 == 0 ? kEcho : kEcho + "\r\n";
    }
    client.Send(many);
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(client.ReadLine(), kEchoReply);
    }
}

TEST(TcpServer, ConnectionOutlivesBadTextsButNotAnOversizedOne) {
    RunningServer server;
    TestClient client(server);
    for (const char* bad : {"rubbish\n", "{\"a\":\"lost quote}\n", "{]"}) {
        client.Send(bad);
        EXPECT_EQ(client.ReadLine(), kParseError) << bad;
        EXPECT_TRUE(client.Answers());
    }
    client.Send("[\"" + std::string(3 * Json::Rpc::Limits::kRequestBytes, 'x'));
    EXPECT_EQ(client.ReadLine(), kParseError);
    EXPECT_TRUE(client.SeesEnd());
    EXPECT_TRUE(server.HasClients(0));
}

TEST(TcpServer, HalfClosedClientGetsAllItsReplies) {
    RunningServer server;
    TestClient client(server);
    std::string requests;
    for (int i = 0; i < 200; ++i) {
        requests += kEcho;
    }
    client.Send(requests + "{\"unfinished\":");
    client.EndSending();
    for (int i = 0; i < 200; ++i) {
        ASSERT_EQ(client.ReadLine(), kEchoReply);
    }
    EXPECT_EQ(client.ReadLine(), kParseError);
    EXPECT_TRUE(client.SeesEnd());
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
        EXPECT_TRUE(client->Answers());
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
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    rlimit scarce = before;
    // The client's own socket takes the last one.
    close(lowestFree);
    scarce.rlim_cur = static_cast<rlim_t>(lowestFree) + 1;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &scarce), 0);

    for (int i = 0; i < 20; ++i) {
        TestClient refused(server);
        EXPECT_TRUE(refused.SeesEnd());
    }
    EXPECT_TRUE(connected.Answers());
    const int roundsBefore = server.rounds;
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_LT(server.rounds - roundsBefore, 20);

    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(TestClient(server).Answers());
}

TEST(TcpServer, SignalsAndDisconnectsAreNoReasonToStop) {
    RunningServer server;
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    for (int i = 0; i < 50; ++i) {
        kill(getpid(), SIGUSR1);
        TestClient leaves(server);
        leaves.Send(kEcho + kEcho + "{\"half\":");
    }
    EXPECT_TRUE(TestClient(server).Answers());
    EXPECT_TRUE(server.HasClients(0));
    EXPECT_EQ(server.tcp.Send(12345, "text\n"), -1);
    EXPECT_EQ(server.tcp.Broadcast("text\n"), 0U);
}

TEST(TcpServer, ClientThatSendsAndSendsDoesNotStarveOthers) {
    RunningServer server;
    TestClient greedy(server);
    TestClient modest(server);
    ASSERT_TRUE(modest.Answers());
    std::atomic<bool> done{false};
    std::thread sender([&] {
        while (!done) {
            greedy.Send(kEcho);
        }
    });
    std::thread reader([&] {
        while (!done) {
            greedy.ReadLine();
        }
    });
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(modest.Answers());
    }
    done = true;
    sender.join();
    reader.join();
}

}  // namespace
