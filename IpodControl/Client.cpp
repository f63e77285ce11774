#include "IpodControl/Client.h"

#include <poll.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <utility>

namespace IpodControl {

namespace {

std::string Seconds(std::chrono::milliseconds time) {
    std::string text = std::to_string(time.count() / 1000);
    if (const auto rest = time.count() % 1000; rest != 0) {
        text += '.' + std::to_string(1000 + rest).substr(1);
        text.erase(text.find_last_not_of('0') + 1);
    }
    return text + " s";
}

}  // namespace

Outcome<Done> Client::Connect() {
    m_received.clear();
    m_notifications.clear();
    return m_wire.Open(m_endpoint, In(m_timeout));
}

Outcome<Reply> Client::Call(std::string_view method, const Json::Value& params) {
    const std::uint64_t id = ++m_lastId;
    if (const auto sent = m_wire.Send(RequestLine(id, method, params)); !sent) {
        return sent.Why();
    }
    auto answer = Await(In(m_timeout), [id](const Message& message) { return message.IsAnswerTo(id); });
    if (!answer) {
        return answer.Why();
    }
    if (!*answer) {
        return Problem{ProblemKind::TimedOut, ToText(m_endpoint) + " did not answer " + std::string(method) +
                                                  " within " + Seconds(m_timeout)};
    }
    const Message& message = **answer;
    return Reply{message.HasResult(), message.Result(), message.Error()};
}

Outcome<Message> Client::Exchange(std::string_view line) {
    if (const auto sent = m_wire.Send(line); !sent) {
        return sent.Why();
    }
    auto answer = Await(In(m_timeout), [](const Message& message) { return !message.IsNotification(); });
    if (!answer) {
        return answer.Why();
    }
    if (!*answer) {
        return Problem{ProblemKind::TimedOut,
                       ToText(m_endpoint) + " did not answer within " + Seconds(m_timeout)};
    }
    return std::move(**answer);
}

Outcome<std::optional<Message>> Client::NextNotification(Deadline deadline) {
    if (!m_notifications.empty()) {
        std::optional<Message> oldest(std::move(m_notifications.front()));
        m_notifications.pop_front();
        return oldest;
    }
    return Await(deadline, [](const Message& message) { return message.IsNotification(); });
}

Outcome<std::optional<Message>> Client::Await(Deadline deadline,
                                              const std::function<bool(const Message&)>& isWanted) {
    for (;;) {
        while (!m_received.empty()) {
            Message message = std::move(m_received.front());
            m_received.pop_front();
            if (isWanted(message)) {
                return std::optional(std::move(message));
            }
            // Any other answer is one that was given up waiting for.
            if (message.IsNotification()) {
                m_notifications.push_back(std::move(message));
            }
        }
        const auto isReady = Wait(deadline);
        if (!isReady) {
            return isReady.Why();
        }
        if (!*isReady) {
            return std::optional<Message>();
        }
        auto messages = m_wire.Receive();
        if (!messages) {
            return messages.Why();
        }
        std::move(messages->begin(), messages->end(), std::back_inserter(m_received));
    }
}

/// False at the deadline.
Outcome<bool> Client::Wait(Deadline deadline) {
    constexpr std::chrono::milliseconds kLongestPoll(60'000);
    if (!m_wire.IsOpen()) {
        return Problem{ProblemKind::Closed, "There is no connection to " + ToText(m_endpoint)};
    }
    for (;;) {
        const auto now = std::chrono::steady_clock::now();
        const auto left = std::clamp(std::chrono::ceil<std::chrono::milliseconds>(deadline - now),
                                     std::chrono::milliseconds(0), kLongestPoll);
        const auto events = static_cast<short>(POLLIN | (m_wire.WantsToWrite() ? POLLOUT : 0));
        pollfd entry{m_wire.Descriptor(), events, 0};
        const int ready = poll(&entry, 1, static_cast<int>(left.count()));
        if (ready > 0 && (entry.revents & POLLOUT) != 0) {
            if (const auto sent = m_wire.Flush(); !sent) {
                return sent.Why();
            }
        }
        if (ready > 0 && (entry.revents & ~POLLOUT) != 0) {
            return true;
        }
        if (ready == 0 && now >= deadline) {
            return false;
        }
    }
}

}  // namespace IpodControl
