// Calls the service and waits for its answers.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string_view>

#include "IpodControl/Wire.h"

namespace IpodControl {

/// What came back for a request: a result, an error object, or neither (some methods leave it out).
struct Reply {
    bool hasResult = false;
    Json::Value result;
    std::optional<RpcError> error;
};

/// One thread uses it.
class Client {
  public:
    /// `timeout` holds for connecting, and for each answer.
    Client(Endpoint endpoint, std::chrono::milliseconds timeout)
        : m_endpoint(std::move(endpoint)), m_timeout(timeout) {}

    Outcome<Done> Connect();
    bool IsConnected() const { return m_wire.IsOpen(); }

    /// Null `params` are left out. Notifications that come in between are kept for NextNotification.
    Outcome<Reply> Call(std::string_view method, const Json::Value& params = {});
    /// Sends `line` as it stands and waits for the first message that is no notification.
    Outcome<Message> Exchange(std::string_view line);

    /// The oldest notification that has not been taken yet; none when none comes before `deadline`.
    Outcome<std::optional<Message>> NextNotification(Deadline deadline);

  private:
    /// The first message that `isWanted`; notifications before it are kept. None at the deadline.
    Outcome<std::optional<Message>> Await(Deadline deadline,
                                          const std::function<bool(const Message&)>& isWanted);
    Outcome<bool> Wait(Deadline deadline);

    const Endpoint m_endpoint;
    const std::chrono::milliseconds m_timeout;
    Wire m_wire;
    std::uint64_t m_lastId = 0;
    std::deque<Message> m_received;  // behind what has been handed out
    std::deque<Message> m_notifications;
};

}  // namespace IpodControl
