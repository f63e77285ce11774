#include "tests/EndToEnd/Scene.h"

#include <utility>

#include "ServiceUtil/JsonText.h"

namespace EndToEnd {

namespace {

Client ConnectTo(ServiceProcess& service) {
    Client client = service.WaitForPort();
    service.WaitForMainLoop();
    client.Result("isIpodConnected");
    return client;
}

}  // namespace

Scene::Scene(ServiceOptions options)
    : service(std::move(options)), client(ConnectTo(service)), control(Client::Await(kControlSocket)) {}

void Scene::Do(const std::string& command) {
    const Json::Value answer = control.Exchange(WriteJson(Quoted(command)) + "\n");
    if (!answer["ok"].asBool())
        throw std::runtime_error(command + ": " + answer["error"].asString());
}

void Scene::PlugPlayer(const std::string& type) {
    Do("{'command':'clear','what':'calls'}");
    Do("{'command':'plug','type':'" + type + "'}");
    Require("a browse session", [&] {
        client.Result("isIpodConnected");
        constexpr const char* kHasBeenCalled =
            R"({"command":"wait","call":"eDevMgriPodOpenMdBrowseSession","timeout":0})";
        return control.Exchange(std::string(kHasBeenCalled) + "\n")["ok"].asBool();
    });
    // Answered in a later step, so the session is open.
    client.Result("isIpodConnected");
}

void Scene::UnplugPlayer() {
    Do("{'command':'unplug'}");
    Require("no connected player", [&] { return client.Result("isIpodConnected")["connected"] == false; });
}

}  // namespace EndToEnd
