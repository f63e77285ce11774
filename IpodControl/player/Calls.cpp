#include "IpodControl/player/Calls.h"

#include <utility>

namespace IpodControl::PlayerView {

void Calls::Send(const char* method, Json::Value params, Handler handler, Time now) {
    const std::uint64_t id = ++m_lastId;
    m_calls[id] = {std::move(handler), now};
    m_lines.push_back(RequestLine(id, method, params));
}

void Calls::Take(const Message& answer) {
    if (!answer.Whole().isObject()) {
        return;
    }
    const Json::Value& id = answer.Whole()["id"];
    const auto call = m_calls.find(id.isUInt64() ? id.asUInt64() : 0);
    if (call == m_calls.end()) {
        return;
    }
    // The handler may send, and may clear.
    const Handler handler = std::move(call->second.handler);
    m_calls.erase(call);
    handler({answer.HasResult(), answer.Result(), answer.Error()});
}

std::vector<std::string> Calls::TakeLines() {
    return std::exchange(m_lines, {});
}

void Calls::Clear() {
    m_calls.clear();
    m_lines.clear();
}

std::optional<Time> Calls::WaitingSince() const {
    // Ids rise with time.
    return m_calls.empty() ? std::nullopt : std::optional(m_calls.begin()->second.sent);
}

}  // namespace IpodControl::PlayerView
