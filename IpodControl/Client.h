// Calls the service and waits for its answers.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "IpodControl/Wire.h"

namespace IpodControl {

/// Connects when it is asked for something, and anew where the connection has gone. One thread uses it.
class Client {
  public:
    /// `timeout` holds for connecting, and for each answer.
    Client(Endpoint endpoint, std::chrono::milliseconds timeout)
        : m_endpoint(std::move(endpoint)), m_timeout(timeout) {}

    /// Notifications that come in between are kept for NextNotification, the oldest only so long as there
    /// are not too many.
    Outcome<Reply> Call(std::string_view method, const Json::Value& params = {});
    /// Several as one batch; the replies stand in the order of the requests.
    Outcome<std::vector<Reply>> CallAll(const std::vector<Request>& requests);

    /// The oldest notification that has not been taken yet; none when none comes before `deadline`.
    Outcome<std::optional<Message>> NextNotification(Deadline deadline);
    /// The next one of that name; those before it are dropped.
    Outcome<std::optional<Message>> AwaitNotification(std::string_view method, Deadline deadline);
    /// Those that have not been taken yet.
    void DropNotifications();

  private:
    /// The first message that `isWanted`; notifications before it are kept. None at the deadline.
    Outcome<std::optional<Message>> Await(Deadline deadline,
                                          const std::function<bool(const Message&)>& isWanted);
    Outcome<Done> Send(std::string_view lines);
    void Keep(Message notification);

    const Endpoint m_endpoint;
    const std::chrono::milliseconds m_timeout;
    Wire m_wire;
    std::uint64_t m_lastId = 0;
    std::deque<Message> m_received;  // behind what has been handed out
    std::deque<Message> m_notifications;
    std::size_t m_keptBytes = 0;  // of m_notifications
};

}  // namespace IpodControl
