// What most tests start from: the service running, a client of it, and the simulated player's strings.
#pragma once

#include <string>

#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {

struct Scene {
    /// Returns once the service is registered with the simulator and its main loop runs.
    explicit Scene(ServiceOptions options = {});

    /// Leads the simulated player by one of its commands, as for Quoted. Throws when it refuses.
    void Do(const std::string& command);
    /// Plugs a player in and waits until it can be browsed.
    void PlugPlayer(const std::string& type = "iap");
    /// Unplugs it and waits until isIpodConnected says so. Each request makes the service take a step, so
    /// that no time is lost.
    void UnplugPlayer();

    ServiceProcess service;
    Client client;
    Client control;
};

}  // namespace EndToEnd
