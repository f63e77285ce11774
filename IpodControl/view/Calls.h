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

#include "IpodControl/Message.h"

namespace IpodControl::PlayerView {

using Time = std::chrono::steady_clock::time_point;

class Calls {
  public:
    using Handler = std::function<void(const Reply&)>;
    /// Replies in the order of the requests.
    using BatchHandler = std::function<void(const std::vector<Reply>&)>;

    void Send(const Request& request, Handler handler, Time now);
    /// As one batch: no other client's request comes in between. A batch that is not answered as one is
    /// answered with empty replies.
    void SendBatch(const std::vector<Request>& requests, BatchHandler handler, Time now);
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
        std::function<void(const Json::Value&)> handler;
        Time sent;
    };

    std::uint64_t m_lastId = 0;
    std::map<std::uint64_t, Call> m_calls;
    std::vector<std::string> m_lines;
};

}  // namespace IpodControl::PlayerView
