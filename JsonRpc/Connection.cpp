#include "JsonRpc/Connection.h"

#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <new>
#include <utility>

namespace Json::Rpc {

Connection::Connection(Descriptor socket, const Limits& limits)
    : m_limits(limits), m_socket(std::move(socket)) {}

Connection::Sent Connection::Send(std::string text, OutputQueue::Kind kind) {
    return SendOrQueue(text, kind, [&text] { return std::make_shared<const std::string>(std::move(text)); });
}

Connection::Sent Connection::Send(const SharedText& text, OutputQueue::Kind kind) {
    return SendOrQueue(*text, kind, [&text] { return text; });
}

/// Most texts are never in the queue.
template <typename Share>
Connection::Sent Connection::SendOrQueue(std::string_view text, OutputQueue::Kind kind, Share share) {
    const MutexLock lock(m_mutex);
    if (!m_takesTexts) {
        return Sent::Refused;
    }
    std::size_t sent = 0;
    const bool isConnected = !m_output.IsEmpty() || m_output.SendAhead(Fd(), text, sent);
    if (isConnected && sent == text.size()) {
        return Sent::Whole;
    }
    try {
        isConnected ? m_output.Push(share(), kind, sent) : ShutdownLocked(CloseReason::None);
    } catch (const std::bad_alloc&) {
        ShutdownLocked(CloseReason::OutOfMemory);  // a part of the text may have gone
    }
    if (m_output.NotificationBytes() > m_limits.notificationBytes) {
        ShutdownLocked(CloseReason::TooManyNotifications);
    }
    Update();
    return m_isDown ? Sent::Refused : Sent::Queued;
}

void Connection::Flush() {
    const MutexLock lock(m_mutex);
    if (!m_isDown && !m_output.SendTo(Fd())) {
        ShutdownLocked(CloseReason::None);
    }
    Update();
}

/// Brings what other threads ask in line with the queue.
void Connection::Update() {
    if (!m_owes && !m_output.IsEmpty()) {
        BeginProgress(Clock::now());
    }
    m_owes = !m_output.IsEmpty();
    m_owesAnswer = m_output.Answers() > 0;
    if (!m_owes && !m_takesTexts && !m_isDown) {
        ::shutdown(Fd(), SHUT_WR);
    }
}

void Connection::EndSending(CloseReason reason) {
    const MutexLock lock(m_mutex);
    m_reason = m_reason == CloseReason::None ? reason : m_reason;
    m_takesTexts = false;
    Update();
}

void Connection::Shutdown(CloseReason reason) {
    const MutexLock lock(m_mutex);
    ShutdownLocked(reason);
    Update();
}

void Connection::ShutdownLocked(CloseReason reason) {
    if (m_isDown) {
        return;
    }
    m_reason = m_reason == CloseReason::None ? reason : m_reason;
    m_takesTexts = false;
    m_isDown = true;
    m_output.Clear();
    ::shutdown(Fd(), SHUT_RDWR);
}

/// What has reached the client's side of the connection. The system makes room in larger steps, so room says
/// nothing about a slow client.
std::uint64_t Connection::AcknowledgedBytes() const {
    int underWay = 0;
    ::ioctl(Fd(), SIOCOUTQ, &underWay);
    return m_output.SentBytes() - static_cast<std::uint64_t>(underWay);
}

void Connection::BeginProgress(Clock::time_point now) {
    m_progressEnd = now + m_limits.progressTime;
    m_acknowledgedBefore = AcknowledgedBytes();
}

void Connection::CheckProgress(Clock::time_point now) {
    const MutexLock lock(m_mutex);
    if (!m_owes || now < m_progressEnd) {
        return;
    }
    if (AcknowledgedBytes() - m_acknowledgedBefore < m_limits.progressBytes) {
        ShutdownLocked(CloseReason::OutputNotTaken);
        Update();
    } else {
        BeginProgress(now);
    }
}

Connection::Clock::time_point Connection::ProgressEnd() const {
    const MutexLock lock(m_mutex);
    return m_progressEnd;
}

CloseReason Connection::Reason() const {
    const MutexLock lock(m_mutex);
    return m_reason;
}

}  // namespace Json::Rpc
