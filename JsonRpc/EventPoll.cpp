#include "JsonRpc/EventPoll.h"

#include <algorithm>
#include <cerrno>

namespace Json::Rpc {

std::span<const epoll_event> EventPoll::Wait(int milliseconds, bool& hasFailed) {
    const int count =
        ::epoll_wait(m_poll.Get(), m_events.data(), static_cast<int>(m_events.size()), milliseconds);
    hasFailed = count < 0 && errno != EINTR;
    return {m_events.data(), static_cast<std::size_t>(std::max(count, 0))};
}

}  // namespace Json::Rpc
