// Clients that behave badly, beside one that does not and must not notice.

#include <gtest/gtest.h>

#include <random>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

void ExpectServed(Client& client) {
    EXPECT_TRUE(client.Result("isIpodConnected").isObject());
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
        "{\"jsonrpc\":\"2.0\",\"method\":\"" + std::string(3'000'000, 'x'),
        "GET / HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n",
        "{\"jsonrpc\":\"2.0\",\"method\":\"isIpodConnected\"",
        R"({"jsonrpc":"2.0","method":"isIpodConnected","id":)" + std::string(100'000, '9') + "}",
        "}}}}]]]]\xff\xfe{\"\xc3\":1e999999}",
    };
    for (const std::string& piece : pieces) {
        Client orderly;
        orderly.Send(piece);
        orderly.ShutDownSending();
        Client sudden;
        sudden.Send(piece);
        sudden.Abort();
        ExpectServed(scene.client);
        EXPECT_TRUE(orderly.WaitForHangUp()) << piece.substr(0, 80);
    }
    EXPECT_EQ(scene.service.Stop(), 0);
}

// What one client does not read is its own loss: it is hung up on, and the others get everything.
TEST(ClientsTest, AWebPageReachesNoMethod) {
    Scene scene;
    Client page;
    const std::string body = Request("exit", 1);
    const Json::Value reply = page.Exchange("POST / HTTP/1.1\r\nHost: 127.0.0.1:8883\r\nContent-Length: " +
                                            std::to_string(body.size()) + "\r\n\r\n" + body);
    EXPECT_EQ(reply["error"]["code"], -32700);
    EXPECT_TRUE(page.WaitForHangUp());
    ExpectServed(scene.client);
    scene.service.WaitForLog("ms: it spoke HTTP\n");
    EXPECT_EQ(scene.service.Stop(), 0) << "no exit was requested before";
}

TEST(ClientsTest, WhoDoesNotReadLosesTheConnection) {
    constexpr std::uint32_t kFirst = 1'000'000;
    constexpr std::uint32_t kEvents = 1000;
    Scene scene;
    scene.PlugPlayer();
    Client reader;
    ExpectServed(reader);
    const std::size_t descriptors = scene.service.DescriptorCount();
    Client idle(kLoopback, 4096);
    ExpectServed(idle);
    ASSERT_EQ(scene.service.DescriptorCount(), descriptors + 1);

    // Replies of many songs fill the idle client's buffers, and time notifications come on top.
    scene.client.Result("getSongList");
    std::string requests;
    for (int i = 0; i < 2000; ++i)
        requests += Request("getBrowseList", i, "{'startIndex':0,'itemCount':1000}");
    idle.Send(requests);
    for (std::uint32_t i = 0; i < kEvents; ++i)
        scene.Do("{'command':'event','words':[8," + std::to_string(kFirst + i) + "]}");
    // It may leave what it is owed for 10 s.
    Require(
        "the idle client's end",
        [&] {
            ExpectServed(scene.client);
            return scene.service.DescriptorCount() == descriptors;
        },
        2 * kPatience);
    EXPECT_TRUE(scene.service.HasLogged("ms: it took too little of what it was owed\n") ||
                scene.service.HasLogged("ms: it left too many notifications untaken\n"));

    for (std::uint32_t i = 0; i < kEvents; ++i)
        reader.Notification("trackTimeNotification", [&](const Json::Value& params) {
            return params["trackTime"].asUInt() == kFirst + i;
        });
    EXPECT_TRUE(idle.WaitForHangUp());
    ExpectServed(reader);
    EXPECT_EQ(scene.service.Stop(), 0);
}

}  // namespace
}  // namespace EndToEnd
