// What the parts of the model share.
#pragma once

#include <chrono>
#include <string>
#include <utility>

#include "IpodControl/player/Calls.h"

namespace IpodControl::PlayerView {

/// What the status line says, for a while.
struct Notice {
    std::string text;
    bool isRefusal = false;
    Time until{};
};

struct Session {
    Time now{};
    Calls calls;
    Notice notice;

    void Say(std::string text) { notice = {std::move(text), false, now + std::chrono::seconds(4)}; }
    /// Why something does not happen.
    void Refuse(std::string text) { notice = {std::move(text), true, now + std::chrono::seconds(6)}; }
    void Ask(const char* method, Json::Value params, Calls::Handler handler) {
        calls.Send(method, std::move(params), std::move(handler), now);
    }
};

}  // namespace IpodControl::PlayerView
