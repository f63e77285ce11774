// Both ends of the service: its port, where the user interface is, and the simulated player's control socket.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "IpodControl/Client.h"
#include "IpodControl/Wire.h"
#include "ScenarioRunner/Condition.h"
#include "ScenarioRunner/ControlSocket.h"

namespace ScenarioRunner {

/// One thread uses it. While it waits for one side it reads the other.
class Session {
  public:
    template <typename T>
    using Outcome = IpodControl::Outcome<T>;
    using Deadline = IpodControl::Deadline;

    struct Event {
        std::string name;
        Json::Value content;  ///< a notification's params, a call's record
    };

    /// Tries until `deadline`, and once at least.
    Outcome<IpodControl::Done> Connect(const IpodControl::Endpoint& endpoint, const std::string& controlPath,
                                       Deadline deadline);

    /// As Connect, to the control socket alone.
    Outcome<IpodControl::Done> OpenControl(const std::string& path, Deadline deadline);

    /// The answer of the control socket, whatever it says.
    Outcome<Json::Value> Command(const Json::Value& object, Deadline deadline);
    /// The service's answer, an error too.
    Outcome<IpodControl::Reply> Request(std::string_view method, const Json::Value& params,
                                        Deadline deadline);

    /// What has come up to here is expected no more.
    Outcome<IpodControl::Done> BeginWindow();
    /// Whether a notification, or a call for `isCall`, of that name and kind comes before `deadline` or has
    /// come in the window. It and those of the same name before it are then taken out of the window.
    Outcome<bool> Await(bool isCall, const std::string& name, const std::vector<Condition>& conditions,
                        Deadline deadline);
    /// The last few in the window, for a report.
    std::vector<Event> Recent(bool isCall);
    /// Reads what comes until then.
    Outcome<IpodControl::Done> Pass(Deadline deadline);

  private:
    Outcome<IpodControl::Done> Open(const IpodControl::Endpoint& endpoint, const std::string& controlPath);
    /// False at the deadline.
    Outcome<bool> Read(Deadline deadline);
    Outcome<IpodControl::Done> ReadService();
    Outcome<IpodControl::Done> ReadControl();
    Outcome<bool> AwaitNotification(const std::string& name, const std::vector<Condition>& conditions,
                                    Deadline deadline);
    Outcome<bool> AwaitCall(const std::string& name, const std::vector<Condition>& conditions,
                            Deadline deadline);
    /// Whether one has begun with the number `since` or a higher one.
    Outcome<bool> WaitForCall(const std::string& name, std::uint64_t since, Deadline deadline);
    Outcome<std::vector<Json::Value>> CallsSince(std::uint64_t number, const std::string& name);

    IpodControl::Wire m_service;
    ControlSocket m_control;
    std::uint64_t m_lastId = 0;
    std::deque<IpodControl::Message> m_replies;
    std::deque<Json::Value> m_answers;
    std::vector<Event> m_notifications;                       // of the window
    std::map<std::string, std::size_t> m_takenNotifications;  // by name: those before it are taken
    std::uint64_t m_windowCall = 1;
    std::map<std::string, std::uint64_t> m_takenCalls;
};

}  // namespace ScenarioRunner
