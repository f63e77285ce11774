// Leads the simulated player from inside the process that has loaded it: plugs devices, scripts answers,
// fires events and reads back the calls that were made. The control socket does the same from outside.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/Api.h"
#include "DeviceSimulator/Functions.h"

namespace DeviceSimulator {

class Library;

/// One call that was made, in the order in which the calls began.
struct CallRecord {
    std::string name;  ///< for example "eDevMgriPodPlay"
    std::vector<std::int64_t>
        arguments;     ///< the numbers handed in, out pointers left out; in/out values as they came in
    std::string text;  ///< a text argument, else empty
    std::uint32_t result = 0;  ///< the code answered; 0 while the call is still running
    bool isRunning = false;
    std::uint64_t thread = 0;  ///< the kernel's thread id
    std::uint64_t number = 0;  ///< counts up with every call, from the process's first
};

/// A device to plug in. What is left out gets a likely value.
struct DeviceDescription {
    std::uint32_t type = DEV_MGR_DEVICE_TYPE_IAP2_2WIRE;  ///< a DevMgrDeviceType
    std::optional<std::uint32_t> handle;                  ///< none: the next free one
    std::string name;                                     ///< empty: a name that fits the type
    std::optional<std::uint32_t> productId;
    std::optional<std::uint32_t> vendorId;
    std::uint32_t hub = 0;  ///< the handle of the hub that it hangs on; 0: none
    bool isLocked = false;  ///< only of a player: it waits to be unlocked before it lets itself be opened
};

/// What becomes of every track's cover.
enum class ArtworkVariant {
    AsIs,
    None,       ///< the track has no cover
    Truncated,  ///< a JPEG cut in the middle
    NotJpeg,    ///< bytes that are no picture, reported as 640 x 640
    Narrow,     ///< 90 x 480 pixels
    Huge,       ///< 2000 x 2000 pixels
    Limit,      ///< 320 x 320 pixels: the highest that the service passes on as it stands
};

/// How the model runs. The defaults are those of a real player.
struct SimulatorOptions {
    std::chrono::milliseconds plugDelay{300};  ///< from registration to the device that is there at start
    std::chrono::milliseconds databaseBuildTime{1000};  ///< of an iAP2 device
    std::vector<DeviceDescription> devices;             ///< plugged in at start
    std::shared_ptr<const Library> library;             ///< null: the built-in one
};

/// Every function's stand-in; an empty one leaves the model's own answer. A stand-in runs on the caller's
/// thread, without any lock of the simulator's held, so it may block and may call back into the simulator.
struct StandIns {
// NOLINTNEXTLINE(bugprone-macro-parentheses): a member's name takes none
#define DEVICE_SIMULATOR_STAND_IN(name) std::function<decltype(::name)> name;
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_STAND_IN)
#undef DEVICE_SIMULATOR_STAND_IN
};

/// The one simulated device manager of the process. Every operation may be called from any thread.
class DEVICE_SIMULATOR_API Simulator {
  public:
    static constexpr std::uint32_t kForEver = UINT32_MAX;

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
    bool Fail(std::string_view name, std::uint32_t code, std::uint32_t times = kForEver);
    /// Makes the next `times` calls of `name` take that long before they do their work.
    bool Delay(std::string_view name, std::chrono::milliseconds time, std::uint32_t times = kForEver);
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
    Simulator();
    ~Simulator();

    class State;
    std::unique_ptr<State> m_state;
};

/// An event record: the words in order (missing ones 0), then the texts packed one after another, each with
/// its NUL.
DEVICE_SIMULATOR_API DeviceEvent MakeEvent(std::initializer_list<std::uint32_t> words,
                                           std::initializer_list<std::string_view> texts = {});

}  // namespace DeviceSimulator
