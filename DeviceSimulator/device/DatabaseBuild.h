// The building of a device's media database: nothing but its progress.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "DeviceSimulator/device/Time.h"

namespace DeviceSimulator {

/// How far the library is that a database is built of, in per cent; 100 once it is ready. Never falls.
using BuildProgress = std::atomic<std::uint32_t>;

/// Knows no clock, as Player. Not locked: the model's lock guards it.
class DatabaseBuild {
  public:
    /// It takes `duration`, or for as long as `progress` takes to come to 100.
    void Start(std::chrono::milliseconds duration, std::shared_ptr<const BuildProgress> progress,
               TimePoint now) {
        m_started = now;
        m_duration = duration;
        m_progress = std::move(progress);
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

    /// None while the library is what it waits for: whoever moves the progress on asks again.
    std::optional<TimePoint> NextDue() const {
        if (!IsRunning() || NextPercentage() > m_progress->load()) {
            return std::nullopt;
        }
        return m_started + m_duration * m_nextStep / kSteps;
    }

    /// The percentages reached by `now` that have not been told yet.
    std::vector<std::uint32_t> Advance(TimePoint now) {
        std::vector<std::uint32_t> percentages;
        for (auto due = NextDue(); due && *due <= now; due = NextDue()) {
            m_percentage = NextPercentage();
            percentages.push_back(m_percentage);
            ++m_nextStep;
        }
        return percentages;
    }

  private:
    static constexpr int kSteps = 10;
    static constexpr int kDone = kSteps + 1;

    std::uint32_t NextPercentage() const { return static_cast<std::uint32_t>(m_nextStep * 100 / kSteps); }

    TimePoint m_started{};
    std::chrono::milliseconds m_duration{0};
    std::shared_ptr<const BuildProgress> m_progress;  // not null while it runs
    int m_nextStep = kDone;
    std::uint32_t m_percentage = 0;
};

}  // namespace DeviceSimulator
