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
