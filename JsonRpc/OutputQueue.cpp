#include "JsonRpc/OutputQueue.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "JsonRpc/Limits.h"

namespace Json::Rpc {

namespace {

/// How many of the bytes the socket has taken; -1 when the connection is broken.
ssize_t SendSome(int fd, std::string_view bytes) {
    for (;;) {
        const ssize_t sent = ::send(fd, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent >= 0 || errno != EINTR) {
            return sent < 0 && (errno == EAGAIN || errno == EWOULDBLOCK) ? 0 : sent;
        }
    }
}

}  // namespace

// A client that takes everything as it comes must not hold up the thread: kSendBytes at a time.

bool OutputQueue::SendAhead(int fd, std::string_view text, std::size_t& sent) {
    const ssize_t count = SendSome(fd, text.substr(0, kSendBytes));
    sent = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    m_sentBytes += sent;
    return count >= 0;
}

void OutputQueue::Push(SharedText text, Kind kind, std::size_t sent) {
    const std::size_t rest = text->size() - sent;
    m_firstSent = m_texts.empty() ? sent : m_firstSent;
    m_texts.push_back({std::move(text), kind});
    (kind == Kind::Answer ? m_answers : m_notificationBytes) += kind == Kind::Answer ? 1 : rest;
}

bool OutputQueue::SendTo(int fd) {
    for (std::size_t room = kSendBytes; room > 0 && !m_texts.empty();) {
        const std::string_view text = *m_texts.front().text;
        const ssize_t sent = SendSome(fd, text.substr(m_firstSent, room));
        if (sent <= 0) {
            return sent == 0;
        }
        room -= static_cast<std::size_t>(sent);
        Count(static_cast<std::size_t>(sent));
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
