// The one simulated device manager of the process, as its C functions, its scripts and its control socket
// reach it.
#pragma once

#include <atomic>
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
    void Reset(SimulatorOptions options, Clock clock = {});

    EventLoop& Loop() { return m_loop; }
    /// The same for all devices of one choice; each is made once.
    std::shared_ptr<MusicSource> Music(const MusicChoice& choice = {});
    CallLog& Calls() { return m_calls; }
    ScriptEngine& Scripts() { return m_scripts; }

  private:
    Engine() = default;

    EventLoop m_loop;
    std::mutex m_musicMutex;  // guards the three below
    std::map<MusicChoice, std::shared_ptr<MusicSource>> m_music;
    std::shared_ptr<const Library> m_library;  // in place of what would be made; null: none
    bool m_isInEnvironment = false;            // a process of its own, which takes what its environment says
    CallLog m_calls;
    ScriptEngine m_scripts;
    std::mutex m_startMutex;
    std::atomic<bool> m_isStarted{false};
};

}  // namespace DeviceSimulator
