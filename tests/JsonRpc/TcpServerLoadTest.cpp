// Texts of the server's own, to clients that read, do not read, or leave.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <thread>

#include "JsonRpc/Limits.h"
#include "JsonRpc/TcpServer.h"
#include "tests/JsonRpc/RunningServer.h"

namespace {

using Clock = std::chrono::steady_clock;

const std::string kFill = "{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":100000},\"id\":2}";
const std::string kFillReply =
    "{\"id\":2,\"jsonrpc\":\"2.0\",\"result\":\"" + std::string(100000, 'f') + "\"}\n";

std::string Note(int number, std::size_t size) {
    return std::to_string(number) + std::string(size, 'n') + "\n";
}

TEST(TcpServerLoad, StormReachesTheReaderWhileTheOneThatReadsNothingIsDisconnected) {
    constexpr int kNotes = 30;
    const auto noteOf = [](int number) { return Note(number, number % 3 == 0 ? 2000000 : 10); };
    RunningServer server;
    TestClient sleeper(server, 4096);
    TestClient reader(server);
    ASSERT_TRUE(sleeper.Answers() && reader.Answers());
    Clock::duration longest{};
    std::thread storm([&] {
        for (int i = 0; i < kNotes; ++i) {
            const auto start = Clock::now();
            server.tcp.Broadcast(noteOf(i));
            longest = std::max(longest, Clock::now() - start);
        }
    });
    int notes = 0;
    for (int i = 0; i < 2 * kNotes; ++i) {
        const std::string line = reader.ReadLine();
        if (line != kFillReply) {
            EXPECT_TRUE(line == noteOf(notes++)) << notes;
            reader.Send(kFill);
        }
    }
    storm.join();
    EXPECT_EQ(notes, kNotes);
    EXPECT_TRUE(server.HasClients(1));
    EXPECT_LT(longest, Json::Rpc::Limits::kBroadcastWait + std::chrono::seconds(2));
}

TEST(TcpServerLoad, AnswerWaitsForAClientThatTakesItSteadilyAndForNoOther) {
    constexpr std::size_t kAnswer = 20000000;
    constexpr std::chrono::milliseconds kPace = Json::Rpc::Limits::kResponseStall / 5;
    const std::string request =
        "{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":20000000},\"id\":2}";
    RunningServer server;
    TestClient slow(server);
    slow.Send(request);
    // Longer in all than a client may take nothing at all.
    const auto start = Clock::now();
    for (int part = 1; part <= 6; ++part) {
        ASSERT_TRUE(slow.ReadAhead(kAnswer / 20));
        std::this_thread::sleep_until(start + part * kPace);
    }
    EXPECT_GT(slow.ReadLine().size(), kAnswer);
    EXPECT_TRUE(slow.Answers());
}

TEST(TcpServerLoad, AnswerThatIsNotTakenCostsTheConnectionAfterAMoment) {
    RunningServer server;
    TestClient stuck(server);
    TestClient waiting(server);
    ASSERT_TRUE(stuck.Answers() && waiting.Answers());
    const auto start = Clock::now();
    stuck.Send("{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":20000000},\"id\":2}");
    ASSERT_TRUE(stuck.ReadAhead(1));
    const auto begun = Clock::now();
    EXPECT_TRUE(server.HasClients(1));
    const auto gone = Clock::now();
    EXPECT_GE(gone - start, Json::Rpc::Limits::kResponseStall);
    EXPECT_LT(gone - begun, Json::Rpc::Limits::kResponseWait);
    EXPECT_TRUE(waiting.Answers());
}

TEST(TcpServerLoad, RepliesAndTextsOfOtherThreadsNeverMix) {
    constexpr int kEach = 200;
    const std::string broadcast = Note(1, 50000);
    const std::string single = Note(2, 30000);
    RunningServer server;
    TestClient client(server);
    ASSERT_TRUE(client.Answers());
    const int fd = server.tcp.GetClients().at(0);
    const auto repeat = [](const auto& action) {
        return std::thread([action] {
            for (int i = 0; i < kEach; ++i) {
                action();
            }
        });
    };
    std::thread broadcaster = repeat([&] { EXPECT_EQ(server.tcp.Broadcast(broadcast), 1U); });
    std::thread sender = repeat([&] { EXPECT_GT(server.tcp.Send(fd, single), 0); });
    std::thread requester = repeat([&] { client.Send(kFill); });
    std::map<std::string, int> lines;
    for (int i = 0; i < 3 * kEach; ++i) {
        ++lines[client.ReadLine()];
    }
    EXPECT_TRUE(
        (lines == std::map<std::string, int>{{broadcast, kEach}, {single, kEach}, {kFillReply, kEach}}));
    broadcaster.join();
    sender.join();
    requester.join();
}

TEST(TcpServerLoad, ClientsComeAndGoUnderBroadcasts) {
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
        leaves.Send(kFill + kFill);
        leaves.ReadLine();
    }
    server.Stop();  // closes while the other thread is sending
    done = true;
    broadcaster.join();
    EXPECT_EQ(server.tcp.Broadcast("{}\n"), 0U);
}

}  // namespace
