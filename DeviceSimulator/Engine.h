// The one simulated device manager of the process, as its C functions, its scripts and its control socket
// reach it.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "DeviceSimulator/CallLog.h"
#include "DeviceSimulator/EventLoop.h"
#include "DeviceSimulator/MusicSource.h"
#include "DeviceSimulator/ScriptEngine.h"
#include "DeviceSimulator/Simulator.h"

namespace DeviceSimulator {

class ControlServer;

/// Every member may be called from any thread.
class Engine {
  public:
    /// Never destroyed: its threads and the process's own may still be at work while the process exits.
    static Engine& Instance();

    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    /// Does what the environment asks for, unless that has been done or Reset has been called.
    void EnsureStarted();
    void Reset(SimulatorOptions options,
               std::shared_ptr<const Clock> clock = std::make_shared<SteadyClock>());

    EventLoop& Loop() { return m_loop; }
    MusicSource& Music() { return m_music; }
    CallLog& Calls() { return m_calls; }
    ScriptEngine& Scripts() { return m_scripts; }

    /// Never null.
    std::shared_ptr<const StandIns> CurrentStandIns() const;
    void SetStandIns(StandIns standIns);

  private:
    Engine();

    EventLoop m_loop;
    MusicSource m_music;
    CallLog m_calls;
    ScriptEngine m_scripts;
    mutable std::mutex m_standInMutex;
    std::shared_ptr<const StandIns> m_standIns;
    std::mutex m_startMutex;
    std::atomic<bool> m_isStarted{false};
    std::unique_ptr<ControlServer> m_control;
};

}  // namespace DeviceSimulator
