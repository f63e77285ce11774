// Answers and texts of the server's own, to clients that read, read slowly, do not read, or leave. Times and
// sizes are a fraction of the service's.

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "JsonRpc/TcpServer.h"
#include "tests/JsonRpc/RunningServer.h"

namespace {

using Clock = std::chrono::steady_clock;
using Json::Rpc::CloseReason;

constexpr std::chrono::milliseconds kProgressTime = std::chrono::milliseconds{800} * TEST_TIME_SCALE;

Json::Rpc::Limits Impatient() {
    Json::Rpc::Limits limits;
    limits.progressTime = kProgressTime;
    return limits;
}

std::string Fill(std::size_t size) {
    return "{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":" + std::to_string(size) +
           "},\"id\":2}";
}
std::string FillReply(std::size_t size) {
    return "{\"id\":2,\"jsonrpc\":\"2.0\",\"result\":\"" + std::string(size, 'f') + "\"}\n";
}
std::string Note(int number, std::size_t size) {
    return std::to_string(number) + std::string(size, 'n') + "\n";
}

TEST(TcpServerLoadTest, SlowReaderGetsItsAnswerWholeWithNotificationsBehindIt) {
    constexpr std::size_t kAnswer = 20000000;
    RunningServer server(Impatient());
    TestClient slow(server, 300000);
    slow.Send(Fill(kAnswer) + kEcho);
    const auto start = Clock::now();
    int parts = 0;
    while (Clock::now() - start < 3 * kProgressTime) {
        ASSERT_TRUE(slow.ReadAhead(100000));
        EXPECT_EQ(server.tcp.Broadcast(Note(++parts, 10)), 1U);
        std::this_thread::sleep_until(start + parts * kProgressTime / 8);
    }
    EXPECT_TRUE(slow.ReadLine() == FillReply(kAnswer));
    for (int part = 1; part <= parts; ++part) {
        EXPECT_EQ(slow.ReadLine(), Note(part, 10));
    }
    EXPECT_EQ(slow.ReadLine(), kEchoReply);
}

TEST(TcpServerLoadTest, ThoseThatTakeTooLittleAreDisconnectedAndNobodyWaitsForThem) {
    RunningServer server(Impatient());
    TestClient stuck(server, 4096);
    TestClient trickling(server, 4096);
    TestClient waiting(server);
    const auto start = Clock::now();
    stuck.Send(Fill(20000000));
    trickling.Send(Fill(20000000));
    ASSERT_TRUE(stuck.ReadAhead(1) && trickling.ReadAhead(1));
    ASSERT_TRUE(waiting.Answers());
    EXPECT_EQ(server.tcp.GetClients().size(), 3U) << "it waited for their disconnection";
    // What a client took earlier does not count for ever.
    ASSERT_TRUE(trickling.ReadAhead(100000));
    for (int eighth = 1; eighth <= 6; ++eighth) {
        std::this_thread::sleep_until(start + eighth * kProgressTime / 8);
        ASSERT_TRUE(waiting.Answers());
        trickling.ReadAhead(1);
    }
    EXPECT_TRUE(server.HasClosed(CloseReason::OutputNotTaken) &&
                server.HasClosed(CloseReason::OutputNotTaken));
    EXPECT_GE(Clock::now() - start, kProgressTime);
    EXPECT_TRUE(server.HasClients(1) && waiting.Answers());
}

TEST(TcpServerLoadTest, WhatIsLeftOfABroadcastLeavesAlthoughNothingElseHappens) {
    Json::Rpc::Limits limits;
    limits.notificationBytes = 30000000;
    RunningServer server(limits);
    TestClient client(server, 4096);
    ASSERT_TRUE(client.Answers());
    server.tcp.Broadcast(Note(1, 20000000));
    EXPECT_TRUE(client.ReadLine() == Note(1, 20000000));

    server.tcp.Broadcast(Note(2, 20000000));
    client.EndSending();
    EXPECT_TRUE(server.HasClients(0)) << "takes no more";
    const int rounds = server.rounds;
    ASSERT_TRUE(TestClient(server).Answers());
    EXPECT_LT(server.rounds, rounds + 10) << "its end does not keep the server awake";
    EXPECT_TRUE(client.ReadLine() == Note(2, 20000000));
    EXPECT_TRUE(client.SeesEnd());
}

TEST(TcpServerLoadTest, NothingIsReadFromAClientThatHasNotTakenItsAnswer) {
    RunningServer server;
    TestClient client(server, 4096);
    TestClient other(server);
    client.Send(Fill(20000000));
    ASSERT_TRUE(client.ReadAhead(1));
    // Not closed by the server for sending: that would need the server to read it.
    client.Send("GET / HTTP/1.1\n" + kEcho);
    const int rounds = server.rounds;
    ASSERT_TRUE(other.Answers() && other.Answers());
    EXPECT_LE(server.rounds, rounds + 6) << "nor does what it has sent keep the server awake";
    EXPECT_EQ(client.ReadLine().size(), FillReply(20000000).size());
    EXPECT_EQ(client.ReadLine(), kParseError);
    EXPECT_EQ(client.ReadLine(), kEchoReply);
}

TEST(TcpServerLoadTest, SleeperLosesItsConnectionAndTheOthersNoNotification) {
    constexpr int kNotes = 200;
    Json::Rpc::Limits limits;
    limits.notificationBytes = 1000000;
    RunningServer server(limits);
    TestClient sleeper(server, 4096);
    TestClient reader(server);
    ASSERT_TRUE(sleeper.Answers() && reader.Answers());
    for (int i = 0; i < kNotes; ++i) {
        EXPECT_GE(server.tcp.Broadcast(Note(i, 50000)), 1U);
        ASSERT_TRUE(reader.ReadLine() == Note(i, 50000)) << i;
    }
    EXPECT_TRUE(server.HasClosed(CloseReason::TooManyNotifications));
    EXPECT_TRUE(server.HasClients(1));
}

TEST(TcpServerLoadTest, RepliesAndTextsOfOtherThreadsNeverMixAndBroadcastsKeepOneOrder) {
    constexpr int kEach = 200;
    RunningServer server;
    TestClient client(server);
    TestClient listener(server);
    ASSERT_TRUE(client.Answers() && listener.Answers());
    const int fd = server.tcp.GetClients().at(0);
    const auto repeat = [](const auto& action) {
        return std::thread([action] {
            for (int i = 0; i < kEach; ++i) {
                action(i);
            }
        });
    };
    std::thread first = repeat([&](int i) { EXPECT_EQ(server.tcp.Broadcast(Note(i, 7000)), 2U); });
    std::thread second = repeat([&](int i) { EXPECT_EQ(server.tcp.Broadcast(Note(i, 3000)), 2U); });
    std::thread sender = repeat([&](int) { EXPECT_EQ(server.tcp.Send(fd, Note(1, 5000)), 5002); });
    std::thread requester = repeat([&](int) { client.Send(Fill(9000)); });
    std::string order;
    for (int i = 0; i < 4 * kEach; ++i) {
        const std::string line = client.ReadLine();
        const bool isNote = line.size() < 8000 && line != Note(1, 5000);
        order += isNote ? line : "";
        ASSERT_TRUE(isNote || line == Note(1, 5000) || line == FillReply(9000));
    }
    std::string otherOrder;
    for (int i = 0; i < 2 * kEach; ++i) {
        otherOrder += listener.ReadLine();
    }
    EXPECT_TRUE(order == otherOrder);
    for (std::thread* thread : {&first, &second, &sender, &requester}) {
        thread->join();
    }
}

TEST(TcpServerLoadTest, ClientsComeAndGoUnderBroadcasts) {
    RunningServer server;
    std::atomic<bool> done{false};
    std::thread broadcaster([&] {
        while (!done) {
            server.tcp.Broadcast(Note(0, 300000));
            for (const int fd : server.tcp.GetClients()) {
                server.tcp.Send(fd, "{}\n");
            }
        }
    });
    for (int i = 0; i < 100; ++i) {
        TestClient leaves(server);
        leaves.Send(Fill(100000) + Fill(100000));
        leaves.ReadLine();
    }
    server.Stop();  // closes while the other thread is sending
    done = true;
    broadcaster.join();
    EXPECT_EQ(server.tcp.Broadcast("{}\n"), 0U);
}

TEST(TcpServerLoadTest, EndWaitsAMomentForThoseThatTakeWhatTheyAreOwed) {
    constexpr std::size_t kAnswer = 30000000;
    Json::Rpc::Limits limits;
    limits.flushTime = std::chrono::milliseconds(2000);
    RunningServer server(limits);
    TestClient reader(server);
    reader.Send(Fill(kAnswer));
    ASSERT_TRUE(reader.ReadAhead(1));
    std::thread rest([&] { EXPECT_TRUE(reader.ReadLine() == FillReply(kAnswer)); });
    server.Stop();
    rest.join();

    RunningServer other;
    TestClient sleeper(other, 4096);
    sleeper.Send(Fill(kAnswer));
    ASSERT_TRUE(sleeper.ReadAhead(1));
    const auto start = Clock::now();
    other.Stop();
    EXPECT_GE(Clock::now() - start, Json::Rpc::Limits{}.flushTime);
    EXPECT_LT(Clock::now() - start, Json::Rpc::Limits{}.flushTime + std::chrono::seconds(1));
}

}  // namespace
