// Where the playing track is, between what the service tells of it.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "IpodControl/view/ViewContext.h"

namespace IpodControl::PlayerView {

/// Milliseconds of the track.
class TrackClock {
  public:
    /// For a new track: `duration` 0 is unknown.
    void Start(std::int64_t position, std::int64_t duration, Time now) {
        SetDuration(duration);
        m_position = Sane(position);
        m_least = 0;
        m_since = now;
    }
    /// What the service says of the same track. Where it lags a little behind, the clock waits for it rather
    /// than step back.
    void Correct(std::int64_t position, Time now) {
        constexpr std::int64_t kLag = 1500;
        const std::int64_t shown = At(now);
        m_position = Sane(position);
        m_since = now;
        m_least = m_position < shown && shown - m_position <= kLag ? shown : 0;
    }
    void SetDuration(std::int64_t duration) { m_duration = Sane(duration); }
    void SetRunning(bool isRunning, Time now) {
        m_position = Unheld(now);
        m_since = now;
        m_isRunning = isRunning;
    }

    bool IsRunning() const { return m_isRunning; }
    std::int64_t Duration() const { return m_duration; }
    /// At most the duration, where that is known.
    std::int64_t At(Time now) const {
        const std::int64_t position = std::max(Unheld(now), m_least);
        return m_duration > 0 ? std::min(position, m_duration) : position;
    }

  private:
    static std::int64_t Sane(std::int64_t milliseconds) {
        // A week: what lies beyond is no time of a track.
        constexpr std::int64_t kLongest = 7LL * 24 * 3600 * 1000;
        return std::clamp<std::int64_t>(milliseconds, 0, kLongest);
    }
    std::int64_t Unheld(Time now) const {
        using std::chrono::milliseconds;
        return m_position +
               (m_isRunning ? std::chrono::duration_cast<milliseconds>(now - m_since).count() : 0);
    }

    std::int64_t m_duration = 0;
    std::int64_t m_position = 0;  // at m_since
    std::int64_t m_least = 0;
    Time m_since{};
    bool m_isRunning = false;
};

}  // namespace IpodControl::PlayerView
