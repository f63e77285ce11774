// Notifications as a person reads them, and the line that shows how far the track has come.
#pragma once

#include <json/json.h>

#include <cstddef>
#include <string>

#include "IpodControl/Message.h"

namespace IpodControl {

/// Without a line end.
std::string NotificationText(const Message& notification);

/// "2026-11-21T06:30:00.123+0000", or its time of the day alone. Local time.
enum class StampStyle { Whole, TimeOfDay };
std::string TimeStamp(StampStyle style);

/// What is known of the track that plays.
class Progress {
  public:
    void Follow(const Message& notification);
    /// At most `width` cells; empty while nothing is known.
    std::string Line(std::size_t width) const;
    void Forget() { *this = Progress(); }

  private:
    std::string m_title;
    std::int64_t m_elapsed = 0;   // ms
    std::int64_t m_duration = 0;  // ms; 0: unknown
    bool m_isKnown = false;
    bool m_isPaused = false;
};

}  // namespace IpodControl
