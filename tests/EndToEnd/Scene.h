// What most tests start from: the service running, a client of it, and the simulated player's strings.
#pragma once

#include <string>

#include "tests/EndToEnd/LogFile.h"
#include "tests/EndToEnd/RpcClient.h"
#include "tests/EndToEnd/ServiceProcess.h"
#include "tests/EndToEnd/SimulatorControl.h"

namespace EndToEnd {

/// A JSON object from its text with ' for ".
Json::Value Quoted(std::string text);

struct Scene {
    /// Returns once the service is registered with the simulator and its main loop runs.
    explicit Scene(ServiceOptions options = {});
    /// Fails the test when a sanitizer has found something in the service.
    ~Scene();

    /// Plugs a player in and waits until it can be browsed. Its handle. Forgets the calls made so far.
    std::uint32_t PlugPlayer(const std::string& type = "iap");
    /// Waits until isIpodConnected answers `connected`. Each request makes the service take a step, so
    /// that no time is lost.
    void WaitForConnection(bool connected);
    /// Sends SIGTERM. The exit status, or none when it does not come.
    std::optional<int> Stop();

    ServiceProcess service;
    RpcClient client;
    SimulatorControl control;
    LogFile log;
};

}  // namespace EndToEnd
