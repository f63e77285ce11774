#include "IpodService/PendingWork.h"

namespace {

bool IsPast(u32 nowMs, u32 deadlineMs) {
    return static_cast<i32>(nowMs) > static_cast<i32>(deadlineMs);
}

}  // namespace

bool PendingWork::TakePlayStatus(u32 nowMs) {
    u32 deadline = m_playStatusDeadlineMs;
    const bool isPast = deadline != 0 && IsPast(nowMs, deadline);
    if (isPast) {
        // An event may have set a later deadline since: that one stays.
        m_playStatusDeadlineMs.compare_exchange_strong(deadline, 0);
    }
    return m_playStatusPending.exchange(false) || isPast;
}

bool PendingWork::TakeTrackTime() {
    return !m_playStatusPending && m_trackTimePending.exchange(false);
}
