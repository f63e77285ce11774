// The one simulated device manager of the process, as its C functions, its scripts and its control socket
// reach it.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "DeviceSimulator/run/CallLog.h"
#include "DeviceSimulator/run/EventLoop.h"
#include "DeviceSimulator/run/MusicSource.h"
#include "DeviceSimulator/run/ScriptEngine.h"

namespace DeviceSimulator {

/// DEVICE_SIMULATOR_DEVICE: what is plugged in at start.
SimulatorOptions OptionsFromEnvironment();

/// Every member may be called from any thread.
class Engine {
  public:
    /// Never destroyed: its threads and the process's own may still be at work while the process exits.
    static Engine& Instance();

    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Does what the environment asks for, unless that has been done or Reset has been called.
    void EnsureStarted();
    /// `maker`: of the music of a player that is plugged in without a choice, where the options have no
    /// library.
    void Reset(SimulatorOptions options, Clock clock = {}, MusicSource::Maker maker = MakeBuiltIn);

    EventLoop& Loop() { return m_loop; }
    /// The same for all devices of one choice. Each is made once, which then begins.
    std::shared_ptr<MusicSource> Music(const MusicChoice& choice = {});
    CallLog& Calls() { return m_calls; }
    ScriptEngine& Scripts() { return m_scripts; }

  private:
    Engine() = default;
    void Start(SimulatorOptions options, Clock clock, MusicSource::Maker maker);
    static std::shared_ptr<const Library> MakeBuiltIn(const LibraryProgress&) { return MakeBuiltInLibrary(); }

    EventLoop m_loop;
    std::mutex m_musicMutex;  // guards the three below
    std::map<MusicChoice, std::shared_ptr<MusicSource>> m_music;
    std::shared_ptr<const Library> m_library;  // without a choice; null: what m_maker makes
    MusicSource::Maker m_maker;
    CallLog m_calls;
    ScriptEngine m_scripts;
    std::mutex m_startMutex;
    std::atomic<bool> m_isStarted{false};
};

/// Gives the device to play on, or says why there is none. Called under the model's lock, once or twice.
using FindDevice = std::function<DevMgrResult(ManagerModel&, Device*&)>;

/// Begins to play, for a process as for a thumb on the player: plays on, or with nothing chosen yet all that
/// the library holds. DEV_MGR_IAP_IPOD_IN_STOP_STATE when it holds nothing.
DevMgrResult PlayOn(Engine& engine, const FindDevice& find);

}  // namespace DeviceSimulator
