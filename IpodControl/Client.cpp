#include "IpodControl/Client.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace IpodControl {

namespace {

std::string Seconds(std::chrono::milliseconds time) {
    std::array<char, 40> text{};
    g_snprintf(text.data(), text.size(), "%.13g s", static_cast<double>(time.count()) / 1000);
    return text.data();
}

}  // namespace

Outcome<Done> Client::Send(std::string_view lines) {
    if (!m_wire.IsOpen()) {
        m_received.clear();
        DropNotifications();
        if (const auto opened = m_wire.Open(m_endpoint, In(m_timeout)); !opened) {
            return opened.Why();
        }
    }
    return m_wire.Send(lines);
}

Outcome<Reply> Client::Call(std::string_view method, const Json::Value& params) {
    auto replies = CallAll({{std::string(method), params}});
    if (!replies) {
        return replies.Why();
    }
    return std::move(replies->front());
}

Outcome<std::vector<Reply>> Client::CallAll(const std::vector<Request>& requests) {
    const std::uint64_t first = m_lastId + 1;
    m_lastId += requests.size();
    if (const auto sent = Send(RequestLine(first, requests)); !sent) {
        return sent.Why();
    }
    auto answer = Await(In(m_timeout), [first](const Message& message) { return message.Id() == first; });
    if (!answer) {
        return answer.Why();
    }
    if (!*answer) {
        return Problem{ProblemKind::TimedOut, ToText(m_endpoint) + " did not answer " +
                                                  requests.back().method + " within " + Seconds(m_timeout)};
    }
    auto replies = (*answer)->Replies();
    if (replies.size() != requests.size()) {
        return Problem{ProblemKind::NotTheService,
                       ToText(m_endpoint) + " does not answer a batch as the service does"};
    }
    return replies;
}

Outcome<std::optional<Message>> Client::NextNotification(Deadline deadline) {
    if (!m_notifications.empty()) {
        std::optional<Message> oldest(std::move(m_notifications.front()));
        m_notifications.pop_front();
        m_keptBytes -= oldest->Size();
        return oldest;
    }
    return Await(deadline, [](const Message& message) { return message.IsNotification(); });
}

Outcome<std::optional<Message>> Client::AwaitNotification(std::string_view method, Deadline deadline) {
    for (;;) {
        auto notification = NextNotification(deadline);
        if (!notification || !*notification || (*notification)->Method() == method) {
            return notification;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return std::optional<Message>();
        }
    }
}

void Client::DropNotifications() {
    m_notifications.clear();
    m_keptBytes = 0;
}

Outcome<std::optional<Message>> Client::Await(Deadline deadline,
                                              const std::function<bool(const Message&)>& isWanted) {
    for (bool isOver = false;;) {
        while (!m_received.empty()) {
            Message message = std::move(m_received.front());
            m_received.pop_front();
            if (isWanted(message)) {
                return std::optional(std::move(message));
            }
            // Any other answer is one that was given up waiting for.
            if (message.IsNotification()) {
                Keep(std::move(message));
            }
        }
        // Whoever sends without a pause does not keep this waiting.
        if (isOver) {
            return std::optional<Message>();
        }
        isOver = std::chrono::steady_clock::now() >= deadline;
        if (!m_wire.IsOpen()) {
            return Problem{ProblemKind::Closed, "There is no connection to " + ToText(m_endpoint)};
        }
        auto messages = m_wire.Wait(deadline);
        if (!messages) {
            return messages.Why();
        }
        std::move(messages->begin(), messages->end(), std::back_inserter(m_received));
    }
}

void Client::Keep(Message notification) {
    constexpr std::size_t kMost = 1000;
    constexpr std::size_t kMostBytes = 16U << 20;
    m_keptBytes += notification.Size();
    m_notifications.push_back(std::move(notification));
    while (m_notifications.size() > kMost || (m_keptBytes > kMostBytes && m_notifications.size() > 1)) {
        m_keptBytes -= m_notifications.front().Size();
        m_notifications.pop_front();
    }
}

}  // namespace IpodControl
