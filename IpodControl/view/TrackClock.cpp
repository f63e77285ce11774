#include "IpodControl/view/TrackClock.h"

#include <algorithm>

namespace IpodControl::PlayerView {

namespace {

constexpr std::int64_t kLag = 1500;
/// A week: what lies beyond is no time of a track.
constexpr std::int64_t kLongest = 7LL * 24 * 3600 * 1000;

std::int64_t Sane(std::int64_t milliseconds) {
    return std::clamp<std::int64_t>(milliseconds, 0, kLongest);
}

}  // namespace

void TrackClock::Start(std::int64_t position, std::int64_t duration, Time now) {
    m_duration = Sane(duration);
    m_position = Sane(position);
    m_least = 0;
    m_since = now;
}

void TrackClock::Correct(std::int64_t position, Time now) {
    const std::int64_t shown = At(now);
    m_position = Sane(position);
    m_since = now;
    m_least = m_position < shown && shown - m_position <= kLag ? shown : 0;
}

void TrackClock::SetDuration(std::int64_t duration) {
    m_duration = Sane(duration);
}

void TrackClock::SetRunning(bool isRunning, Time now) {
    m_position = Unheld(now);
    m_since = now;
    m_isRunning = isRunning;
}

std::int64_t TrackClock::Unheld(Time now) const {
    using std::chrono::milliseconds;
    return m_position + (m_isRunning ? std::chrono::duration_cast<milliseconds>(now - m_since).count() : 0);
}

std::int64_t TrackClock::At(Time now) const {
    const std::int64_t position = std::max(Unheld(now), m_least);
    return m_duration > 0 ? std::min(position, m_duration) : position;
}

}  // namespace IpodControl::PlayerView
