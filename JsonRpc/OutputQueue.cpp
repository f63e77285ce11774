#include "JsonRpc/OutputQueue.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "JsonRpc/Limits.h"

namespace Json::Rpc {

void OutputQueue::Push(SharedText text, Kind kind) {
    (kind == Kind::Answer ? m_answers : m_notificationBytes) += kind == Kind::Answer ? 1 : text->size();
    m_texts.push_back({std::move(text), kind});
}

bool OutputQueue::SendTo(int fd) {
    // A client that takes everything as it comes must not hold up the thread.
    for (std::size_t room = kSendBytes; room > 0 && !m_texts.empty();) {
        const std::string& text = *m_texts.front().text;
        const std::size_t wanted = std::min(room, text.size() - m_firstSent);
        const ssize_t sent = ::send(fd, text.data() + m_firstSent, wanted, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0) {
            room -= static_cast<std::size_t>(sent);
            Count(static_cast<std::size_t>(sent));
        } else if (errno != EINTR) {
            return errno == EAGAIN || errno == EWOULDBLOCK;
        }
    }
    return true;
}

void OutputQueue::Count(std::size_t sent) {
    const Entry& first = m_texts.front();
    m_sentBytes += sent;
    m_firstSent += sent;
    m_notificationBytes -= first.kind == Kind::Notification ? sent : 0;
    if (m_firstSent == first.text->size()) {
        m_answers -= first.kind == Kind::Answer ? 1 : 0;
        m_texts.pop_front();
        m_firstSent = 0;
    }
}

void OutputQueue::Clear() {
    m_texts.clear();
    m_firstSent = m_answers = m_notificationBytes = 0;
}

}  // namespace Json::Rpc
