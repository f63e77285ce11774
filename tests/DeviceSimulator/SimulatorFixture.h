// What the tests of the C functions share: a simulator whose clock they move, and a process that notes what
// its callback is told.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DeviceSimulator/Engine.h"
#include "DeviceSimulator/Simulator.h"
#include "FakeLibrary.h"

namespace DeviceSimulator::Test {

using namespace std::chrono_literals;

/// Stands still until it is moved.
class ManualClock : public Clock {
  public:
    TimePoint Now() const override { return TimePoint{1000s} + std::chrono::nanoseconds{m_passed.load()}; }
    void Wait(std::condition_variable& changed, std::unique_lock<std::mutex>& lock,
              std::optional<TimePoint>) const override {
        changed.wait(lock);
    }
    void Move(std::chrono::nanoseconds time) { m_passed += time.count(); }

  private:
    std::atomic<std::int64_t> m_passed{0};
};

/// Every event that reaches Callback, by process.
class EventRecorder {
  public:
    static EventRecorder& Instance() {
        static EventRecorder recorder;
        return recorder;
    }

    static void Callback(const DeviceEvent* event, u32 ph) {
        EventRecorder& self = Instance();
        const std::lock_guard lock(self.m_mutex);
        self.m_events[ph].push_back(*event);
    }

    std::vector<DeviceEvent> Take(u32 ph) {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_events[ph], {});
    }

    void Clear() {
        const std::lock_guard lock(m_mutex);
        m_events.clear();
    }

  private:
    std::mutex m_mutex;
    std::map<u32, std::vector<DeviceEvent>> m_events;
};

class SimulatorTest : public testing::Test {
  protected:
    static constexpr std::uint32_t kTracks = 24;

    SimulatorTest() { Restart({}); }
    ~SimulatorTest() override {
        Simulator::Instance().Reset();
        EventRecorder::Instance().Clear();
    }

    /// A simulator with a FakeLibrary, this fixture's clock and one registered process.
    void Restart(SimulatorOptions options) {
        options.library = std::make_shared<FakeLibrary>(kTracks);
        Engine::Instance().Reset(std::move(options), clock);
        ASSERT_EQ(eDevMgrRegisterProcess(&ph, EventRecorder::Callback), kSuccess);
    }

    void Pass(std::chrono::nanoseconds time) {
        clock->Move(time);
        Engine::Instance().Loop().ClockMoved();
        Simulator::Instance().Drain();
    }

    /// Plugs a player in and opens it, with a browse session.
    void OpenPlayer(u32 type = kIap) {
        DeviceDescription device;
        device.type = type;
        dh = Simulator::Instance().Plug(device);
        ASSERT_EQ(eDevMgrOpenDevice(ph, dh), kSuccess);
        ASSERT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), kSuccess);
        TakeEvents();
    }

    std::vector<DeviceEvent> TakeEvents() {
        Simulator::Instance().Drain();
        return EventRecorder::Instance().Take(ph);
    }

    /// The ids and first values of the events since the last time, as "13 17=48000 9".
    std::string TakeEventText() {
        std::string text;
        for (const DeviceEvent& event : TakeEvents()) {
            text += (text.empty() ? "" : " ") + std::to_string(event.words[0]);
            text += event.words[1] != 0 ? "=" + std::to_string(event.words[1]) : "";
        }
        return text;
    }

    u32 Status() {
        u32 status = 99;
        EXPECT_EQ(eDevMgriPodGetPlayStatus(ph, dh, &status), kSuccess);
        return status;
    }

    /// The title of what plays, or the result code.
    std::string Title() {
        TrackMetadataRecord record{};
        const u32 result = eDevMgriPodGetPlayingTrackMetaData(ph, dh, &record);
        return result == kSuccess ? record.title : std::to_string(result);
    }

    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
    u32 ph = 0;
    u32 dh = 0;
};

}  // namespace DeviceSimulator::Test
