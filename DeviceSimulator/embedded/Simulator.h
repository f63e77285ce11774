// A player in the process of a test or a bench, which links it and so calls its functions directly: plugs
// devices, scripts answers, fires events and reads back the calls that were made. The control socket does the
// same for one in a process of its own.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "DeviceSimulator/control/ControlCommands.h"
#include "DeviceSimulator/device/DeviceEvents.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

/// The one simulated device manager of the process. Every operation may be called from any thread.
class Simulator {
  public:
    static Simulator& Instance() {
        static auto* const kSimulator = new Simulator;
        return *kSimulator;
    }

    /// Forgets devices, scripts, stand-ins, calls and registrations, and starts over. No call may be running
    /// and none of the old callbacks is made afterwards.
    void Reset(SimulatorOptions options = {}) { Engine::Instance().Reset(std::move(options)); }

    /// Plugs a device in, at once, with the events that a player sends. Returns its handle; 0, and plugs
    /// nothing in, where the command "plug" would be refused.
    std::uint32_t Plug(const DeviceDescription& device) {
        return Started().Loop().Locked([&](ManagerModel& model, TimePoint) { return model.Plug(device); });
    }
    /// With a hub goes what hangs on it. False when no such device is plugged in.
    bool Unplug(std::uint32_t handle) {
        return Started().Loop().Locked([&](ManagerModel& model, TimePoint) { return model.Unplug(handle); });
    }

    /// Carries out one line of the control socket, whether or not there is such a socket, and returns its
    /// answer without a line end. A "wait" in it blocks.
    std::string Command(std::string_view line) {
        Started();
        return AnswerControlLine(line, [] { return false; });
    }

    /// Makes the next `times` calls of `name` answer `code` and do nothing else. False: no such function.
    bool Fail(std::string_view name, std::uint32_t code, std::uint32_t times = ScriptEngine::kForEver) {
        const auto function = FindFunction(name);
        if (function) {
            Started().Scripts().Fail(*function, code, times);
        }
        return function.has_value();
    }
    /// Makes the next `times` calls of `name` take that long before they do their work.
    bool Delay(std::string_view name, std::chrono::milliseconds time,
               std::uint32_t times = ScriptEngine::kForEver) {
        const auto function = FindFunction(name);
        if (function) {
            Started().Scripts().Delay(*function, time, times);
        }
        return function.has_value();
    }
    /// Makes every cover such a one, and has it "in progress" for that long after a track begins.
    void SetArtwork(ArtworkVariant variant, std::chrono::milliseconds inProgress = {}) {
        Started().Scripts().SetArtwork({variant, inProgress});
    }
    /// Takes back what Fail, Delay and SetArtwork asked for.
    void ClearScripts() { Started().Scripts().Clear(); }
    /// Replaces the stand-ins, all at once. What Fail asks for goes before them.
    void SetStandIns(StandIns standIns) { Started().Scripts().SetStandIns(std::move(standIns)); }

    /// Hands `event` to every registered callback, on the simulator's event thread, in order with its own
    /// events.
    void Fire(const DeviceEvent& event) {
        Started().Loop().Locked([&](ManagerModel& model, TimePoint) { model.Fire(event); });
    }
    /// Returns once every event fired or due so far has been delivered. Never call it from the callback.
    void Drain() { Started().Loop().Drain(); }

    /// The newest 16,384 of them; older ones are forgotten.
    std::vector<CallRecord> Calls() const { return Started().Calls().Records({}); }
    /// The calls of one function.
    std::vector<CallRecord> Calls(std::string_view name) const {
        const auto function = FindFunction(name);
        return function ? Started().Calls().Records({.only = function}) : std::vector<CallRecord>{};
    }
    void ClearCalls() { Started().Calls().Clear(); }
    /// Waits until `name` has been called (begun) at least `times` times since the last ClearCalls or Reset.
    bool WaitForCall(std::string_view name, std::size_t times, std::chrono::milliseconds timeout) const {
        const auto function = FindFunction(name);
        return function && Started().Calls().WaitFor(*function, times, timeout);
    }

    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

  private:
    Simulator() = default;
    ~Simulator() = default;

    static Engine& Started() {
        Engine::Instance().EnsureStarted();
        return Engine::Instance();
    }
};

}  // namespace DeviceSimulator
