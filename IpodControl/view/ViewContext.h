// What the parts of the view share.
#pragma once

#include <chrono>
#include <string>
#include <utility>
#include <vector>

#include "IpodControl/view/Calls.h"

namespace IpodControl::PlayerView {

/// What the status line says, for a while.
struct Notice {
    std::string text;
    bool isRefusal = false;
    Time until{};
};

struct ViewContext {
    Time now{};
    Calls calls;
    Notice notice;

    void Say(std::string text) { notice = {std::move(text), false, now + std::chrono::seconds(4)}; }
    /// Why something does not happen.
    void Refuse(std::string text) { notice = {std::move(text), true, now + std::chrono::seconds(6)}; }
    void Ask(const char* method, Json::Value params, Calls::Handler handler) {
        calls.Send({method, std::move(params)}, std::move(handler), now);
    }
    void AskBatch(const std::vector<Request>& requests, Calls::BatchHandler handler) {
        calls.SendBatch(requests, std::move(handler), now);
    }
};

}  // namespace IpodControl::PlayerView
