#include "IpodService/PendingWork.h"

namespace {

bool IsPast(u32 nowMs, u32 deadlineMs) {
    return static_cast<i32>(nowMs) > static_cast<i32>(deadlineMs);
}

}  // namespace

bool PendingWork::RequestExit() {
    const bool isFirst = !m_exitRequested.exchange(true);
    {
        const MutexLock lock(m_exitMutex);
        m_exitCondition.NotifyAll();
    }
    Wake();
    return isFirst;
}

bool PendingWork::WaitForExit(std::chrono::milliseconds pause) {
    const auto end = std::chrono::steady_clock::now() + pause;
    const MutexLock lock(m_exitMutex);
    while (!m_exitRequested && m_exitCondition.WaitUntil(m_exitMutex, end)) {
    }
    return m_exitRequested;
}

void PendingWork::RequestPlayStatusAt(u32 deadlineMs) {
    m_playStatusDeadlineMs = deadlineMs;
    Wake();
}

void PendingWork::Request(std::atomic<bool>& flag) {
    flag = true;
    Wake();
}

void PendingWork::Wake() const {
    if (m_wake) {
        m_wake();
    }
}

bool PendingWork::TakePlayStatus(const ClockMs& now) {
    u32 deadline = m_playStatusDeadlineMs;
    const bool isPast = deadline != 0 && IsPast(now(), deadline);
    if (isPast) {
        // An event may have set a later deadline since: that one stays.
        m_playStatusDeadlineMs.compare_exchange_strong(deadline, 0);
    }
    return Take(m_playStatusPending) || isPast;
}

std::optional<u32> PendingWork::TimeToPlayStatus(const ClockMs& now) const {
    const u32 deadline = m_playStatusDeadlineMs;
    if (deadline == 0) {
        return std::nullopt;
    }
    const u32 nowMs = now();
    return IsPast(nowMs, deadline) ? 0 : deadline - nowMs + 1;
}

bool PendingWork::TakeTrackTime() {
    return !m_playStatusPending && Take(m_trackTimePending);
}
