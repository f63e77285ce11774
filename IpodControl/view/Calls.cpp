#include "IpodControl/view/Calls.h"

#include <utility>

namespace IpodControl::PlayerView {

void Calls::Send(const Request& request, Handler handler, Time now) {
    m_calls[++m_lastId] = {
        [handler = std::move(handler)](const Json::Value& answer) { handler(ReplyIn(answer)); }, now};
    m_lines.push_back(RequestLine(m_lastId, request));
}

void Calls::SendBatch(const std::vector<Request>& requests, BatchHandler handler, Time now) {
    const std::uint64_t first = m_lastId + 1;
    m_calls[first] = {[handler = std::move(handler), count = requests.size()](const Json::Value& answers) {
                          std::vector<Reply> replies(count);
                          for (Json::ArrayIndex i = 0; answers.isArray() && i < answers.size() && i < count;
                               ++i) {
                              replies[i] = ReplyIn(answers[i]);
                          }
                          handler(replies);
                      },
                      now};
    m_lastId += requests.size();
    m_lines.push_back(BatchLine(first, requests));
}

void Calls::Take(const Message& answer) {
    const auto call = m_calls.find(answer.Id().value_or(0));
    if (call == m_calls.end()) {
        return;
    }
    // The handler may send, and may clear.
    const auto handler = std::move(call->second.handler);
    m_calls.erase(call);
    handler(answer.Whole());
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
