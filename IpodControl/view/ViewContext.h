// What the parts of the view share: requests under way, the time, and the status line.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "IpodControl/Message.h"

namespace IpodControl::PlayerView {

using Time = std::chrono::steady_clock::time_point;

/// What the status line says, for a while.
struct Notice {
    std::string text;
    bool isRefusal = false;
    Time until{};
};

class ViewContext {
  public:
    using Handler = std::function<void(const Reply&)>;
    /// Replies in the order of the requests, as many: empty ones where they are not answered as they should.
    using BatchHandler = std::function<void(const std::vector<Reply>&)>;

    Time now{};
    Notice notice;

    void Say(std::string text) { notice = {std::move(text), false, now + std::chrono::seconds(4)}; }
    /// Why something does not happen.
    void Refuse(std::string text) { notice = {std::move(text), true, now + std::chrono::seconds(6)}; }

    void Ask(
        const Request& request, Handler handler = [](const Reply&) {});
    /// In one go: no other client's request comes in between.
    void AskAll(const std::vector<Request>& requests, BatchHandler handler);

    /// Hands an answer to who waits for it; one that nobody waits for is left.
    void Take(const Message& answer);
    /// What has been asked since the last time, as lines to send.
    std::vector<std::string> TakeLines() { return std::exchange(m_lines, {}); }
    /// Nobody waits any more, and nothing is said: for when the connection has gone.
    void Clear();
    /// Since when the oldest answer has been waited for.
    std::optional<Time> WaitingSince() const;

  private:
    struct Call {
        BatchHandler handler;
        std::size_t requests;
        Time sent;
    };

    std::uint64_t m_lastId = 0;
    std::map<std::uint64_t, Call> m_calls;
    std::vector<std::string> m_lines;
};

}  // namespace IpodControl::PlayerView
