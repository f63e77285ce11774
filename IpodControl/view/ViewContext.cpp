#include "IpodControl/view/ViewContext.h"

namespace IpodControl::PlayerView {

void ViewContext::Ask(const Request& request, Handler handler) {
    AskAll({request},
           [handler = std::move(handler)](const std::vector<Reply>& replies) { handler(replies.front()); });
}

void ViewContext::AskAll(const std::vector<Request>& requests, BatchHandler handler) {
    const std::uint64_t first = m_lastId + 1;
    m_calls[first] = {std::move(handler), requests.size(), now};
    m_lastId += requests.size();
    m_lines.push_back(RequestLine(first, requests));
}

void ViewContext::Take(const Message& answer) {
    const auto found = m_calls.find(answer.Id().value_or(0));
    if (found == m_calls.end()) {
        return;
    }
    // The handler may ask, and may clear.
    const Call call = std::move(found->second);
    m_calls.erase(found);
    auto replies = answer.Replies();
    replies.resize(call.requests);
    call.handler(replies);
}

void ViewContext::Clear() {
    m_calls.clear();
    m_lines.clear();
    notice = {};
}

std::optional<Time> ViewContext::WaitingSince() const {
    // Ids rise with time.
    return m_calls.empty() ? std::nullopt : std::optional(m_calls.begin()->second.sent);
}

}  // namespace IpodControl::PlayerView
