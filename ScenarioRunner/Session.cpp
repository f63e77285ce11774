#include "ScenarioRunner/Session.h"

#include <poll.h>

#include <algorithm>
#include <thread>
#include <utility>

namespace ScenarioRunner {

using namespace std::chrono_literals;
using IpodControl::Done;
using IpodControl::In;
using IpodControl::Message;
using IpodControl::Problem;
using IpodControl::ProblemKind;

namespace {

constexpr auto kRetryPause = 50ms;
/// For what the control socket answers at once.
constexpr auto kPatience = 10s;

std::chrono::milliseconds Left(Session::Deadline deadline) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    return std::clamp<std::chrono::milliseconds>(left, 0ms, 60s);
}

template <typename Try>
IpodControl::Outcome<Done> Retry(Session::Deadline deadline, Try attempt) {
    for (;;) {
        const auto outcome = attempt();
        if (outcome || std::chrono::steady_clock::now() >= deadline) {
            return outcome;
        }
        std::this_thread::sleep_for(kRetryPause);
    }
}

}  // namespace

Session::Outcome<Done> Session::Connect(const IpodControl::Endpoint& endpoint, const std::string& controlPath,
                                        Deadline deadline) {
    return Retry(deadline, [&] { return Open(endpoint, controlPath); });
}

Session::Outcome<Done> Session::OpenControl(const std::string& path, Deadline deadline) {
    return Retry(deadline, [&] { return m_control.Open(path); });
}

Session::Outcome<Done> Session::Open(const IpodControl::Endpoint& endpoint, const std::string& controlPath) {
    if (const auto opened = m_service.Open(endpoint, In(2s)); !opened) {
        return opened.Why();
    }
    if (const auto opened = m_control.Open(controlPath); !opened) {
        return opened.Why();
    }
    // Notifications come once the service has accepted the connection, which its first answer proves.
    const auto reply = Request("isIpodConnected", {}, In(kPatience));
    return reply ? Outcome<Done>(Done{}) : reply.Why();
}

Session::Outcome<Json::Value> Session::Command(const Json::Value& object, Deadline deadline) {
    if (!m_control.IsOpen()) {
        return Problem{ProblemKind::Closed, "The control socket has closed the connection"};
    }
    if (const auto sent = m_control.Send(IpodControl::ToLine(object)); !sent) {
        return sent.Why();
    }
    while (m_answers.empty()) {
        const auto isMore = Read(deadline);
        if (!isMore) {
            return isMore.Why();
        }
        if (!*isMore) {
            m_control.Close();
            return Problem{ProblemKind::TimedOut, "The control socket did not answer in time"};
        }
    }
    Json::Value answer = std::move(m_answers.front());
    m_answers.pop_front();
    return answer;
}

Session::Outcome<IpodControl::Reply> Session::Request(std::string_view method, const Json::Value& params,
                                                      Deadline deadline) {
    const std::uint64_t id = ++m_lastId;
    if (!m_service.IsOpen()) {
        return Problem{ProblemKind::Closed, "The service has closed the connection"};
    }
    if (const auto sent = m_service.Send(IpodControl::RequestLine(id, method, params)); !sent) {
        return sent.Why();
    }
    for (;;) {
        while (!m_replies.empty()) {
            const Message reply = std::move(m_replies.front());
            m_replies.pop_front();
            if (reply.IsAnswerTo(id)) {
                return IpodControl::Reply{reply.HasResult(), reply.Result(), reply.Error()};
            }
        }
        const auto isMore = Read(deadline);
        if (!isMore) {
            return isMore.Why();
        }
        if (!*isMore) {
            return Problem{ProblemKind::TimedOut,
                           "The service did not answer " + std::string(method) + " in time"};
        }
    }
}

Session::Outcome<Done> Session::BeginWindow() {
    Json::Value command;
    command["command"] = "calls";
    command["limit"] = 0;
    const auto answer = Command(command, In(kPatience));
    if (!answer) {
        return answer.Why();
    }
    m_windowCall = (*answer)["next"].isUInt64() ? (*answer)["next"].asUInt64() : 1;
    m_takenCalls.clear();
    m_notifications.clear();
    m_takenNotifications.clear();
    return Done{};
}

Session::Outcome<bool> Session::Await(bool isCall, const std::string& name,
                                      const std::vector<Condition>& conditions, Deadline deadline) {
    return isCall ? AwaitCall(name, conditions, deadline) : AwaitNotification(name, conditions, deadline);
}

Session::Outcome<bool> Session::AwaitNotification(const std::string& name,
                                                  const std::vector<Condition>& conditions,
                                                  Deadline deadline) {
    std::size_t next = m_takenNotifications[name];
    for (;;) {
        for (; next < m_notifications.size(); ++next) {
            if (m_notifications[next].name == name && AllHold(conditions, m_notifications[next].content)) {
                m_takenNotifications[name] = next + 1;
                return true;
            }
        }
        const auto isMore = Read(deadline);
        if (!isMore || !*isMore) {
            return isMore;
        }
    }
}

Session::Outcome<bool> Session::AwaitCall(const std::string& name, const std::vector<Condition>& conditions,
                                          Deadline deadline) {
    std::uint64_t next = std::max(m_windowCall, m_takenCalls[name]);
    for (;;) {
        const auto hasCome = WaitForCall(name, next, deadline);
        if (!hasCome || !*hasCome) {
            return hasCome;
        }
        const auto calls = CallsSince(next, name);
        if (!calls) {
            return calls.Why();
        }
        for (const Json::Value& call : *calls) {
            next = call["number"].asUInt64();
            if (AllHold(conditions, call)) {
                m_takenCalls[name] = next + 1;
                return true;
            }
            if (call["running"] == true) {
                break;
            }
            ++next;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return false;
        }
        // One that runs may yet end as it is wanted.
        if (const auto passed = Pass(std::min(deadline, In(kRetryPause))); !passed) {
            return passed.Why();
        }
    }
}

Session::Outcome<bool> Session::WaitForCall(const std::string& name, std::uint64_t since, Deadline deadline) {
    Json::Value wait;
    wait["command"] = "wait";
    wait["call"] = name;
    wait["since"] = Json::UInt64{since};
    for (;;) {
        const auto left = Left(deadline);
        wait["timeout"] = Json::Int64{left.count()};
        const auto end = In(left);
        const auto answer = Command(wait, end + kPatience);
        if (!answer) {
            return answer.Why();
        }
        const auto now = std::chrono::steady_clock::now();
        if ((*answer)["ok"] == true || now >= deadline) {
            return (*answer)["ok"] == true;
        }
        if (now < end) {
            // Not for want of time.
            return Problem{ProblemKind::NotTheService, (*answer)["error"].asString()};
        }
    }
}

Session::Outcome<std::vector<Json::Value>> Session::CallsSince(std::uint64_t number,
                                                               const std::string& name) {
    Json::Value command;
    command["command"] = "calls";
    command["since"] = Json::UInt64{number};
    if (!name.empty()) {
        command["call"] = name;
    }
    const auto answer = Command(command, In(kPatience));
    if (!answer) {
        return answer.Why();
    }
    std::vector<Json::Value> calls;
    for (const Json::Value& call : (*answer)["calls"]) {
        if (call.isObject() && call["number"].isUInt64()) {
            calls.push_back(call);
        }
    }
    return calls;
}

std::vector<Session::Event> Session::Recent(bool isCall) {
    constexpr std::ptrdiff_t kMost = 6;
    std::vector<Event> events = m_notifications;
    if (isCall) {
        events.clear();
        const auto calls = CallsSince(m_windowCall, "");
        for (const Json::Value& call : calls ? *calls : std::vector<Json::Value>()) {
            events.push_back({call["name"].asString(), call["result"]});
        }
    }
    const auto count = static_cast<std::ptrdiff_t>(events.size());
    events.erase(events.begin(), events.begin() + std::max<std::ptrdiff_t>(count - kMost, 0));
    return events;
}

Session::Outcome<Done> Session::Pass(Deadline deadline) {
    for (;;) {
        const auto isMore = Read(deadline);
        if (!isMore) {
            return isMore.Why();
        }
        if (!*isMore) {
            return Done{};
        }
    }
}

Session::Outcome<bool> Session::Read(Deadline deadline) {
    for (;;) {
        const auto left = Left(deadline);
        const auto events = static_cast<short>(POLLIN | (m_service.WantsToWrite() ? POLLOUT : 0));
        // A closed one has the descriptor -1, which poll passes over.
        pollfd entries[] = {{m_service.Descriptor(), events, 0}, {m_control.Descriptor(), POLLIN, 0}};
        const int ready = poll(entries, std::size(entries), static_cast<int>(left.count()));
        if (ready > 0 && entries[0].revents != 0) {
            if (const auto read = ReadService(); !read) {
                return read.Why();
            }
        }
        if (ready > 0 && entries[1].revents != 0) {
            if (const auto read = ReadControl(); !read) {
                return read.Why();
            }
        }
        if (ready > 0) {
            return true;
        }
        if (ready == 0 && left == 0ms) {
            return false;
        }
    }
}

Session::Outcome<Done> Session::ReadService() {
    if (const auto sent = m_service.Flush(); !sent) {
        return sent.Why();
    }
    auto messages = m_service.Receive();
    if (!messages) {
        return messages.Why();
    }
    for (Message& message : *messages) {
        if (message.IsNotification()) {
            m_notifications.push_back({message.Method(), message.Params()});
        } else {
            m_replies.push_back(std::move(message));
        }
    }
    return Done{};
}

Session::Outcome<Done> Session::ReadControl() {
    auto answers = m_control.Receive();
    if (!answers) {
        return answers.Why();
    }
    std::move(answers->begin(), answers->end(), std::back_inserter(m_answers));
    return Done{};
}

}  // namespace ScenarioRunner
