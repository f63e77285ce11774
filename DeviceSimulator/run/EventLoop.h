// The model behind its lock, and the thread that tells the registered processes what happens in it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <type_traits>
#include <utility>

#include "DeviceSimulator/device/ManagerModel.h"
#include "DeviceSimulator/sound/SoundSender.h"

namespace DeviceSimulator {

/// Where the model's time comes from. An empty one is CLOCK_MONOTONIC; for another one, nothing is due until
/// EventLoop::ClockMoved is called.
using Clock = std::function<TimePoint()>;

/// Lives as long as the process. Every member may be called from any thread; the lock is never held while a
/// callback runs.
class EventLoop {
  public:
    EventLoop();
    EventLoop(const EventLoop&) = delete;
    EventLoop& operator=(const EventLoop&) = delete;

    /// What `work`(model, now) returns; it runs under the lock, with everything done that was due before.
    template <typename Work>
    auto Locked(Work work) {
        const std::lock_guard lock(m_mutex);
        const TimePoint now = Now();
        m_model.Advance(now);
        if constexpr (std::is_void_v<std::invoke_result_t<Work, ManagerModel&, TimePoint>>) {
            work(m_model, now);
            Settle(now);
        } else {
            auto result = work(m_model, now);
            Settle(now);
            return result;
        }
    }

    void Reset(SimulatorOptions options, Clock clock);
    /// After it no callback of `process` runs any more, unless it is called from one.
    DevMgrResult Deregister(std::uint32_t process);
    /// Waits until what is pending or due now has been delivered.
    void Drain();
    /// Looks at the clock again.
    void ClockMoved();

  private:
    struct Sounding {
        std::uint64_t instance = 0;  // of a device; 0: none
        std::uint64_t changes = 0;   // the player's count
        bool operator==(const Sounding&) const = default;
    };

    TimePoint Now() const { return m_clock ? m_clock() : std::chrono::steady_clock::now(); }
    void Settle(TimePoint now);
    void FollowSound();
    void PassOver(const SoundTrack& track);
    void Run();
    void Deliver(std::unique_lock<std::mutex>& lock, const PendingEvent& pending);
    void WaitWhileRunning(std::unique_lock<std::mutex>& lock, std::uint32_t process);

    std::mutex m_mutex;
    std::condition_variable m_changed;    // something is pending, or due sooner
    std::condition_variable m_delivered;  // a callback has returned, or an event is done with
    Clock m_clock;
    ManagerModel m_model;
    SoundSender m_sound;
    Sounding m_sounding;  // what the sender has been told of
    std::thread m_thread;
    std::optional<TimePoint> m_sleepsUntil;
    bool m_isSleeping = false;
    std::uint32_t m_runningProcess = 0;  // whose callback runs; 0: none
    std::uint64_t m_deliveredCount = 0;  // up to this sequence number all is done with
};

}  // namespace DeviceSimulator
