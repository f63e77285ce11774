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

}  // namespace
}  // namespace EndToEnd
