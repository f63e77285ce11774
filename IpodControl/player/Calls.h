// Requests under way: lines to send, and who waits for which answer.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "IpodControl/Client.h"
#include "IpodControl/Message.h"

namespace IpodControl::PlayerView {

using Time = std::chrono::steady_clock::time_point;

class Calls {
  public:
    using Handler = std::function<void(const Reply&)>;

    void Send(const char* method, Json::Value params, Handler handler, Time now);
    /// Hands an answer to who waits for it; one that nobody waits for is left.
    void Take(const Message& answer);
    /// What has been sent since the last time, as lines.
    std::vector<std::string> TakeLines();
    /// Nobody waits any more: for when the connection has gone.
    void Clear();

    /// Since when the oldest answer has been waited for.
    std::optional<Time> WaitingSince() const;

  private:
    struct Call {
        Handler handler;
        Time sent;
    };

    std::uint64_t m_lastId = 0;
    std::map<std::uint64_t, Call> m_calls;
    std::vector<std::string> m_lines;
};

}  // namespace IpodControl::PlayerView
