// Clients that behave badly, beside one that does not and must not notice.

#include <gtest/gtest.h>

#include <random>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

void ExpectServed(RpcClient& client) {
    EXPECT_TRUE(client.Result("isIpodConnected").isObject());
}

TEST(ClientsTest, RequestsMayComeInAnyPieces) {
    Scene scene;
    LineSocket& socket = scene.client.Socket();
    for (const char byte : Request("isIpodConnected", "in bytes"))
        socket.Send({&byte, 1});
    EXPECT_EQ(scene.client.Exchange("")["id"], "in bytes");

    socket.Send(Request("isIpodConnected", 1) + Request("getRepeatMode", 2) + "\r\n\n" +
                Request("isTrackPaused", 3));
    for (int id = 1; id <= 3; ++id)
        EXPECT_EQ(scene.client.Exchange("")["id"], id);

    const Json::Value batch =
        scene.client.Exchange("[" + Request("isIpodConnected", 1) + ",5," + Request("nonsense", 3) + "]");
    ASSERT_EQ(batch.size(), 3U);
    EXPECT_TRUE(batch[0].isMember("result"));
    EXPECT_EQ(batch[1]["error"]["code"], -32600);
    EXPECT_EQ(batch[2]["error"]["code"], -32601);

    socket.Send(Request("isIpodConnected", "last"));
    socket.ShutDownSending();
    EXPECT_EQ(scene.client.Exchange("")["id"], "last");
    EXPECT_TRUE(socket.WaitForHangUp());
}

TEST(ClientsTest, RubbishHarmsNobodyElse) {
    Scene scene;
    std::string random(100'000, '\0');
    std::mt19937 generator(8883);
    for (char& byte : random)
        byte = static_cast<char>(generator());
    const std::string pieces[] = {
        random,
        std::string(100'000, '['),
        std::string(3'000'000, '{'),
        "{\"jsonrpc\":\"2.0\",\"method\":\"" + std::string(2'000'000, 'x'),
        "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n",
        std::string(1000, '\0'),
        "\"\\",
        "{\"jsonrpc\":\"2.0\",\"method\":\"isIpodConnected\"",
        R"({"jsonrpc":"2.0","method":"isIpodConnected","id":)" + std::string(100'000, '9') + "}",
        "}}}}]]]]\xff\xfe{\"\xc3\":1e999999}",
    };
    for (const std::string& piece : pieces) {
        LineSocket orderly = LineSocket::ConnectTcp(RpcClient::kLoopback);
        orderly.SendWhileOpen(piece);
        orderly.ShutDownSending();
        LineSocket sudden = LineSocket::ConnectTcp(RpcClient::kLoopback);
        sudden.SendWhileOpen(piece);
        sudden.Abort();
        ExpectServed(scene.client);
        EXPECT_TRUE(orderly.WaitForHangUp()) << piece.substr(0, 80);
    }
    EXPECT_EQ(scene.Stop(), 0);
}

// There is room for 256; the others are turned away and find room once somebody leaves.
TEST(ClientsTest, OneTooManyIsTurnedAway) {
    Scene scene;
    std::vector<std::unique_ptr<RpcClient>> admitted;
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        auto client = std::make_unique<RpcClient>();
        try {
            ExpectServed(*client);
            admitted.push_back(std::move(client));
        } catch (const std::runtime_error&) {
            ++refused;
        }
    }
    EXPECT_EQ(admitted.size(), 255U);
    EXPECT_EQ(refused, 45);
    scene.control.Event({9});
    for (const auto& client : admitted)
        client->Notification("trackPausedNotification");
    for (std::size_t i = 0; i < admitted.size(); i += 2)
        admitted[i]->Socket().Abort();
    ExpectServed(scene.client);
    RpcClient newcomer;
    ExpectServed(newcomer);
    EXPECT_EQ(scene.Stop(), 0);
}

// What one client does not read is its own loss: it is hung up on, and the others get everything.
TEST(ClientsTest, WhoDoesNotReadLosesTheConnection) {
    constexpr std::uint32_t kPlayTime = 8;
    constexpr std::uint32_t kFirst = 1'000'000;
    constexpr std::uint32_t kEvents = 1000;
    Scene scene;
    scene.PlugPlayer();
    RpcClient reader;
    ExpectServed(reader);
    const std::size_t descriptors = scene.service.DescriptorCount();
    RpcClient idle(RpcClient::kLoopback, 4096);
    ExpectServed(idle);
    ASSERT_EQ(scene.service.DescriptorCount(), descriptors + 1);

    // Replies of many songs fill the idle client's buffers, and time notifications come on top.
    scene.client.Result("getSongList");
    const Json::Value wholeList = Quoted("{'startIndex':0,'itemCount':1000}");
    std::string requests;
    for (int i = 0; i < 2000; ++i)
        requests += Request("getBrowseList", i, wholeList);
    idle.Socket().SendWhileOpen(requests);
    for (std::uint32_t i = 0; i < kEvents; ++i)
        scene.control.Event({kPlayTime, kFirst + i});
    Require("the idle client's end", [&] {
        ExpectServed(scene.client);
        return scene.service.DescriptorCount() == descriptors;
    });

    for (std::uint32_t i = 0; i < kEvents; ++i)
        reader.Notification("trackTimeNotification", [&](const Json::Value& params) {
            return params["trackTime"].asUInt() == kFirst + i;
        });
    EXPECT_TRUE(idle.Socket().WaitForHangUp());
    ExpectServed(reader);
    EXPECT_EQ(scene.Stop(), 0);
}

}  // namespace
}  // namespace EndToEnd
