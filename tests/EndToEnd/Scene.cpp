#include "tests/EndToEnd/Scene.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>

namespace EndToEnd {

namespace {

RpcClient ConnectTo(ServiceProcess& service, const std::string& address) {
    service.WaitForPort();
    service.WaitForMainLoop();
    RpcClient client(address);
    client.Result("isIpodConnected");
    return client;
}

}  // namespace

Json::Value Quoted(std::string text) {
    std::replace(text.begin(), text.end(), '\'', '"');
    return ParseJson(text);
}

Scene::Scene(ServiceOptions options) : service(options), client(ConnectTo(service, options.address)) {}

Scene::~Scene() {
    const std::string errors = service.StandardError();
    for (const char* sign : {"Sanitizer:", "runtime error:"})
        if (errors.find(sign) != std::string::npos)
            ADD_FAILURE() << errors;
}

std::uint32_t Scene::PlugPlayer(const std::string& type) {
    control.ForgetCalls();
    const std::uint32_t handle = control.Plug(type);
    Require("a browse session", [&] {
        client.Result("isIpodConnected");
        return control.HasBeenCalled("eDevMgriPodOpenMdBrowseSession");
    });
    // Answered in a later step, so the session is open.
    client.Result("isIpodConnected");
    return handle;
}

void Scene::WaitForConnection(bool connected) {
    Require(connected ? "a connected player" : "no connected player",
            [&] { return client.Result("isIpodConnected")["connected"] == connected; });
}

std::optional<int> Scene::Stop() {
    service.Signal(SIGTERM);
    return service.WaitForExit();
}

}  // namespace EndToEnd
