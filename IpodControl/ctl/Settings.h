// What holds for every subcommand.
#pragma once

#include <chrono>
#include <optional>

#include "IpodControl/Client.h"

namespace IpodControl {

struct Settings {
    static constexpr std::chrono::milliseconds kUsualTimeout{5000};

    Endpoint endpoint;
    bool json = false;
    std::optional<std::chrono::milliseconds> givenTimeout;

    std::chrono::milliseconds Timeout() const { return givenTimeout.value_or(kUsualTimeout); }
    Client MakeClient() const { return {endpoint, Timeout()}; }
};

}  // namespace IpodControl
