// The building of a device's media database: nothing but its progress.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "DeviceSimulator/Clock.h"

namespace DeviceSimulator {

/// Knows no clock, as Player. Not locked: the model's lock guards it.
class DatabaseBuild {
  public:
    void Start(std::chrono::milliseconds duration, TimePoint now) {
        m_started = now;
        m_duration = duration;
        m_nextStep = 0;
        m_percentage = 0;
    }
    void Abort() {
        if (IsRunning()) {
            m_nextStep = kDone;
            m_percentage = 0;
        }
    }
    bool IsRunning() const { return m_nextStep < kDone; }
    /// The last one told; 0 when there is no database.
    std::uint32_t Percentage() const { return m_percentage; }

    std::optional<TimePoint> NextDue() const {
        if (!IsRunning()) {
            return std::nullopt;
        }
        return m_started + m_duration * m_nextStep / kSteps;
    }

    /// The percentages reached by `now` that have not been told yet.
    std::vector<std::uint32_t> Advance(TimePoint now) {
        std::vector<std::uint32_t> percentages;
        for (auto due = NextDue(); due && *due <= now; due = NextDue()) {
            m_percentage = static_cast<std::uint32_t>(m_nextStep * 100 / kSteps);
            percentages.push_back(m_percentage);
            ++m_nextStep;
        }
        return percentages;
    }

  private:
    static constexpr int kSteps = 10;
    static constexpr int kDone = kSteps + 1;

    TimePoint m_started{};
    std::chrono::milliseconds m_duration{0};
    int m_nextStep = kDone;
    std::uint32_t m_percentage = 0;
};

}  // namespace DeviceSimulator
