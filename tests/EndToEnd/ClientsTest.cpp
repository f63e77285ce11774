// Clients that behave badly, beside one that does not and must not notice.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <random>

#include "ServiceUtil/Descriptor.h"

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

// GStreamer reads its list of plugins from a pipe that says nothing.
TEST(ClientsTest, ThePortAnswersBeforeThePluginsAreKnown) {
    const char* const given = std::getenv("GST_REGISTRY");
    ASSERT_NE(given, nullptr) << "the sandbox sets it";
    const std::string registry = given;
    const char* const silent = "/tmp/silent-registry";
    ASSERT_EQ(mkfifo(silent, 0600), 0);
    setenv("GST_REGISTRY", silent, 1);
    const ServiceProcess service;
    setenv("GST_REGISTRY", registry.c_str(), 1);
    Descriptor pipe;
    Require("the list to be read", [&] {
        pipe = Descriptor(open(silent, O_WRONLY | O_NONBLOCK | O_CLOEXEC));  // fails until there is a reader
        return pipe.IsOpen();
    });
    Client client;  // at the first try
    ExpectServed(client);
}

}  // namespace
}  // namespace EndToEnd
