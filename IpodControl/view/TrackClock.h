// Where the playing track is, between what the service tells of it.
#pragma once

#include <chrono>
#include <cstdint>

#include "IpodControl/view/Calls.h"

namespace IpodControl::PlayerView {

/// Milliseconds of the track.
class TrackClock {
  public:
    /// For a new track: `duration` 0 is unknown.
    void Start(std::int64_t position, std::int64_t duration, Time now);
    /// What the service says of the same track. Where it lags a little behind, the clock waits for it rather
    /// than step back.
    void Correct(std::int64_t position, Time now);
    void SetDuration(std::int64_t duration);
    void SetRunning(bool isRunning, Time now);

    bool IsRunning() const { return m_isRunning; }
    std::int64_t Duration() const { return m_duration; }
    /// At most the duration, where that is known.
    std::int64_t At(Time now) const;

  private:
    std::int64_t Unheld(Time now) const;

    std::int64_t m_duration = 0;
    std::int64_t m_position = 0;  // at m_since
    std::int64_t m_least = 0;
    Time m_since{};
    bool m_isRunning = false;
};

}  // namespace IpodControl::PlayerView
