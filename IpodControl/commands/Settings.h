// What holds for every subcommand.
#pragma once

#include <chrono>
#include <optional>

#include "IpodControl/Client.h"
#include "IpodControl/commands/Output.h"

namespace IpodControl {

struct Settings {
    static constexpr std::chrono::milliseconds kUsualTimeout{5000};

    Endpoint endpoint;
    bool json = false;
    std::optional<std::chrono::milliseconds> givenTimeout;

    std::chrono::milliseconds Timeout() const { return givenTimeout.value_or(kUsualTimeout); }

    /// Connects and gives back what `command` does; complains where there is no service.
    template <typename Command>
    int WithService(Command command) const {
        Client client(endpoint, Timeout());
        const auto connected = client.Connect();
        return connected ? command(client) : Complain(connected.Why());
    }
};

}  // namespace IpodControl
