// Texts of the server's own, to clients that read, do not read, or leave.

#include <gtest/gtest.h>
#include <json/reader.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "JsonRpc/Limits.h"
#include "JsonRpc/TcpServer.h"
#include "tests/JsonRpc/RunningServer.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kPictureBytes = 2000000;

std::string Note(int number, std::size_t size) {
    return "{\"method\":\"note\",\"params\":{\"number\":" + std::to_string(number) + ",\"text\":\"" +
           std::string(size, 'n') + "\"}}\n";
}

bool ParseLine(const std::string& line, Json::Value& value) {
    static const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    return !line.empty() && line.back() == '\n' &&
           reader->parse(line.data(), line.data() + line.size(), &value, nullptr);
}

TEST(TcpServerLoad, StormReachesTheReaderWhileTheOneThatReadsNothingIsDisconnected) {
    constexpr int kNotes = 30;
    RunningServer server;
    TestClient sleeper(server, 4096);
    ASSERT_TRUE(sleeper.Answers());
    TestClient reader(server);
    ASSERT_TRUE(reader.Answers());
    Clock::duration longest{};
    std::thread storm([&] {
        for (int i = 0; i < kNotes; ++i) {
            const auto start = Clock::now();
            server.tcp.Broadcast(Note(i, i % 3 == 0 ? kPictureBytes : 10));
            longest = std::max(longest, Clock::now() - start);
        }
    });
    int notes = 0;
    int replies = 0;
    while (notes < kNotes || replies < kNotes) {
        if (replies <= notes && replies < kNotes) {
            reader.Send("{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":100000},\"id\":2}");
        }
        Json::Value line;
        ASSERT_TRUE(ParseLine(reader.ReadLine(), line));
        if (line.isMember("method")) {
            EXPECT_EQ(line["params"]["number"].asInt(), notes++);
        } else {
            ++replies;
        }
        replies = replies > kNotes ? kNotes : replies;
    }
    storm.join();
    EXPECT_TRUE(server.HasClients(1));
    EXPECT_LT(longest, Json::Rpc::Limits::kBroadcastWait + std::chrono::seconds(2));
}

TEST(TcpServerLoad, SpentBudgetDisconnectsTheSlowButServesWhoHasRoom) {
    RunningServer server;
    TestClient sleeper(server, 4096);
    ASSERT_TRUE(sleeper.Answers());
    TestClient reader(server);
    ASSERT_TRUE(reader.Answers());
    const std::vector<int> clients = server.tcp.GetClients();
    ASSERT_EQ(clients.size(), 2U);

    const auto start = Clock::now();
    Json::Rpc::SendBudget budget;
    EXPECT_EQ(server.tcp.Send(clients[0], Note(0, 10 * kPictureBytes), budget), -1);
    EXPECT_EQ(budget.Left(), std::chrono::nanoseconds::zero());
    EXPECT_GE(Clock::now() - start, Json::Rpc::Limits::kBroadcastWait);
    const std::string small = Note(1, 10);
    EXPECT_EQ(server.tcp.Send(clients[1], small, budget), static_cast<ssize_t>(small.size()));
    EXPECT_EQ(reader.ReadLine(), small);
    EXPECT_TRUE(server.HasClients(1));
    EXPECT_EQ(server.tcp.Send(clients[0], small), -1);
}

TEST(TcpServerLoad, ResponseWaitsAsLongAsTheClientMakesProgress) {
    const std::string request =
        "{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":20000000},\"id\":1}";
    RunningServer server;
    TestClient stuck(server, 4096);
    TestClient slow(server);
    stuck.Send(request);
    const auto start = Clock::now();
    EXPECT_TRUE(slow.Answers());
    EXPECT_TRUE(server.HasClients(1));
    EXPECT_GE(Clock::now() - start, Json::Rpc::Limits::kResponseStall);

    slow.Send(request);
    for (int i = 0; i < 4; ++i) {  // longer in all than the limit without progress
        std::this_thread::sleep_for(Json::Rpc::Limits::kResponseStall * 2 / 5);
        slow.ReadAhead(2000000);
    }
    EXPECT_GT(slow.ReadLine().size(), 20000000U);
}

TEST(TcpServerLoad, RepliesAndTextsOfOtherThreadsNeverMix) {
    constexpr int kEach = 200;
    RunningServer server;
    TestClient client(server);
    ASSERT_TRUE(client.Answers());
    const int fd = server.tcp.GetClients().at(0);
    std::thread broadcaster([&] {
        for (int i = 0; i < kEach; ++i) {
            EXPECT_EQ(server.tcp.Broadcast(Note(i, 50000)), 1U);
        }
    });
    std::thread sender([&] {
        for (int i = 0; i < kEach; ++i) {
            EXPECT_GT(server.tcp.Send(fd, Note(i, 30000)), 0);
        }
    });
    std::thread requester([&] {
        for (int i = 0; i < kEach; ++i) {
            client.Send("{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":70000},\"id\":2}");
        }
    });
    for (int i = 0; i < 3 * kEach; ++i) {
        Json::Value line;
        ASSERT_TRUE(ParseLine(client.ReadLine(), line)) << "line " << i;
    }
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
        leaves.Send("{\"jsonrpc\":\"2.0\",\"method\":\"fill\",\"params\":{\"size\":300000},\"id\":2}");
        leaves.ReadLine();
    }
    server.Stop();  // closes while the other thread is sending
    done = true;
    broadcaster.join();
    EXPECT_EQ(server.tcp.Broadcast("{}\n"), 0U);
}

}  // namespace
