// A player in the process of a test or a bench, which links it and so calls its functions directly: plugs
// devices, scripts answers, fires events and reads back the calls that were made. The control socket does the
// same for one in a process of its own.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/device/DeviceEvents.h"
#include "DeviceSimulator/device/SimulatorOptions.h"
#include "DeviceSimulator/run/CallLog.h"
#include "DeviceSimulator/run/ScriptEngine.h"

namespace DeviceSimulator {

/// The one simulated device manager of the process. Every operation may be called from any thread.
class Simulator {
  public:
    static Simulator& Instance();

    /// Forgets devices, scripts, stand-ins, calls and registrations, and starts over. No call may be running
    /// and none of the old callbacks is made afterwards.
    void Reset(SimulatorOptions options = {});

    /// Plugs a device in, at once, with the events that a player sends. Returns its handle; 0, and plugs
    /// nothing in, when the handle asked for is taken.
    std::uint32_t Plug(const DeviceDescription& device);
    /// With a hub goes what hangs on it. False when no such device is plugged in.
    bool Unplug(std::uint32_t handle);

    /// Carries out one line of the control socket, whether or not there is such a socket, and returns its
    /// answer without a line end. A "wait" in it blocks.
    std::string Command(std::string_view line);

    /// Makes the next `times` calls of `name` answer `code` and do nothing else. False: no such function.
    bool Fail(std::string_view name, std::uint32_t code, std::uint32_t times = ScriptEngine::kForEver);
    /// Makes the next `times` calls of `name` take that long before they do their work.
    bool Delay(std::string_view name, std::chrono::milliseconds time,
               std::uint32_t times = ScriptEngine::kForEver);
    /// Makes every cover such a one, and has it "in progress" for that long after a track begins.
    void SetArtwork(ArtworkVariant variant, std::chrono::milliseconds inProgress = {});
    /// Takes back what Fail, Delay and SetArtwork asked for.
    void ClearScripts();
    /// Replaces the stand-ins, all at once. What Fail asks for goes before them.
    void SetStandIns(StandIns standIns);

    /// Hands `event` to every registered callback, on the simulator's event thread, in order with its own
    /// events.
    void Fire(const DeviceEvent& event);
    /// Returns once every event fired or due so far has been delivered. Never call it from the callback.
    void Drain();

    /// The newest 16,384 of them; older ones are forgotten.
    std::vector<CallRecord> Calls() const;
    /// The calls of one function.
    std::vector<CallRecord> Calls(std::string_view name) const;
    void ClearCalls();
    /// Waits until `name` has been called (begun) at least `times` times since the last ClearCalls or Reset.
    bool WaitForCall(std::string_view name, std::size_t times, std::chrono::milliseconds timeout) const;

    Simulator(const Simulator&) = delete;
    Simulator& operator=(const Simulator&) = delete;

  private:
    Simulator() = default;
    ~Simulator() = default;
};

}  // namespace DeviceSimulator
