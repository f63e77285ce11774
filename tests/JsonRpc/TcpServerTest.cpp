// Connections: how they begin, what they may send, how they end.

#include "JsonRpc/TcpServer.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "tests/JsonRpc/RunningServer.h"

namespace {

using Json::Rpc::CloseReason;
using Json::Rpc::Limits;

Limits ShortDrain() {
    Limits limits;
    limits.drainTime = std::chrono::milliseconds(600);
    return limits;
}

TEST(TcpServerTest, BindsNumericAddressesThatAreFreeAndTellsWhyNot) {
    kServerThread.Assert();
    for (const char* address : {"", "localhost", "--stdout", "127.0.0.1:80", "256.0.0.1"}) {
        Json::Rpc::TcpServer tcp(address, 0);
        EXPECT_FALSE(tcp.Bind()) << address;
        EXPECT_EQ(tcp.GetBindError(), "Invalid argument");
        EXPECT_EQ(tcp.GetPort(), 0);
    }
    RunningServer server;
    const std::uint16_t port = server.tcp.GetPort();
    Json::Rpc::TcpServer second("127.0.0.1", port);
    EXPECT_FALSE(second.Bind());
    EXPECT_EQ(second.GetBindError(), "Address already in use");
    TestClient client(server);
    ASSERT_TRUE(client.Answers());
    server.Stop();
    EXPECT_TRUE(client.SeesEnd());
    EXPECT_TRUE(server.tcp.GetClients().empty());
    EXPECT_TRUE(second.Bind() && second.Listen()) << "free at once, though a client was connected";
}

TEST(TcpServerTest, EverythingIsAnsweredBeforeTheConnectionEndsAndNothingBehindIt) {
    const Limits limits = ShortDrain();
    RunningServer server(limits);
    TestClient other(server);
    TestClient halfClosed(server);
    TestClient oversized(server);
    ASSERT_TRUE(other.Answers());
    std::string requests;
    for (int i = 0; i < 200; ++i) {
        requests += kEcho;
    }
    const auto start = std::chrono::steady_clock::now();
    halfClosed.Send(requests + "{\"unfinished\":");
    halfClosed.EndSending();
    oversized.Send(requests + "[\"" + std::string(3 * limits.requestBytes, 'x'));
    oversized.Send("\"]" + kEcho);
    for (TestClient* client : {&halfClosed, &oversized}) {
        for (int i = 0; i < 200; ++i) {
            ASSERT_EQ(client->ReadLine(), kEchoReply);
        }
        EXPECT_EQ(client->ReadLine(), kParseError);
        EXPECT_TRUE(client->SeesEnd());
    }
    EXPECT_EQ(server.tcp.Broadcast("note\n"), 1U);
    EXPECT_EQ(other.ReadLine(), "note\n");
    // It neither stops sending nor closes, and is let go all the same.
    EXPECT_TRUE(WaitUntil([&] { return !oversized.Send(kEcho); }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, limits.drainTime);
    EXPECT_TRUE(server.HasClosed(CloseReason::RequestTooLarge));
    EXPECT_TRUE(server.HasClients(1));
}

TEST(TcpServerTest, RequestThatIsNotEndedInTimeCostsTheConnectionAndASilentClientStays) {
    Limits limits = ShortDrain();
    limits.requestTime = std::chrono::milliseconds(200);
    RunningServer server(limits);
    TestClient silent(server);
    TestClient trickling(server);
    ASSERT_TRUE(silent.Answers());
    const auto start = std::chrono::steady_clock::now();
    trickling.Send(kEcho + "[");
    EXPECT_EQ(trickling.ReadLine(), kEchoReply);
    EXPECT_TRUE(WaitUntil([&] { return !trickling.Send(" ") || server.tcp.GetClients().size() == 1; }));
    EXPECT_GE(std::chrono::steady_clock::now() - start, limits.requestTime);
    EXPECT_EQ(trickling.ReadLine(), kParseError);
    EXPECT_TRUE(trickling.SeesEnd());
    EXPECT_TRUE(server.HasClosed(CloseReason::RequestUnfinished));
    EXPECT_TRUE(silent.Answers());
}

TEST(TcpServerTest, UnfinishedRequestsTogetherAreBoundedAndTheOldestGoes) {
    Limits limits = ShortDrain();
    limits.unfinishedBytes = 100000;
    RunningServer server(limits);
    const std::string part = "[\"" + std::string(40000, 'x');
    TestClient refused(server);
    refused.Send("[!" + part);  // not kept, so not counted
    TestClient first(server);
    TestClient second(server);
    TestClient third(server);
    for (TestClient* client : {&first, &second}) {
        client->Send(kEcho + part);  // once the request is answered the server is at the part
        ASSERT_EQ(client->ReadLine(), kEchoReply);
    }
    EXPECT_EQ(server.tcp.GetClients().size(), 4U);
    third.Send(part);
    EXPECT_EQ(first.ReadLine(), kParseError);
    EXPECT_TRUE(first.SeesEnd());
    EXPECT_TRUE(server.HasClosed(CloseReason::InputTooLarge));
    second.Send("\"]");
    EXPECT_EQ(second.ReadLine().substr(0, 10), "[{\"error\":");
    EXPECT_EQ(server.tcp.GetClients().size(), 3U);
}

TEST(TcpServerTest, FullTableDropsTheOldestUnfinishedRequestElseTheNewcomer) {
    Limits limits;
    RunningServer server(limits);
    std::vector<std::unique_ptr<TestClient>> clients;
    for (std::size_t i = 0; i < limits.clients; ++i) {
        clients.push_back(std::make_unique<TestClient>(server));
    }
    ASSERT_TRUE(server.HasClients(limits.clients));
    EXPECT_TRUE(TestClient(server).SeesEnd());
    EXPECT_EQ(server.tcp.Broadcast("note\n"), limits.clients);
    for (const auto& client : clients) {
        EXPECT_EQ(client->ReadLine(), "note\n");
    }
    for (const std::size_t unfinished : {7U, 3U}) {
        clients[unfinished]->Send(kEcho + "{");
        EXPECT_EQ(clients[unfinished]->ReadLine(), kEchoReply);
    }
    EXPECT_TRUE(TestClient(server).Answers());
    EXPECT_TRUE(server.HasClosed(CloseReason::TableFull));
    EXPECT_EQ(clients[7]->ReadLine(), kParseError);
    EXPECT_TRUE(clients[3]->Send("}") && !clients[3]->ReadLine().empty());
    EXPECT_TRUE(clients[0]->Answers());
}

TEST(TcpServerTest, DoesNotSpinWhenDescriptorsRunOut) {
    RunningServer server;
    TestClient connected(server);
    ASSERT_TRUE(connected.Answers());
    // Objects of every kind have come and gone once: UndefinedBehaviorSanitizer looks at one of a kind that
    // is new to it through a pipe, and takes it for none when there is no descriptor.
    ASSERT_TRUE(TestClient(server).Answers());
    ASSERT_TRUE(server.HasClients(1) && connected.Answers());
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
    const int rounds = server.rounds;
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    EXPECT_LT(server.rounds, rounds + 20);

    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_TRUE(TestClient(server).Answers());
}

}  // namespace
