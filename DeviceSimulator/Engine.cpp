#include "DeviceSimulator/Engine.h"

#include <utility>

#include "DeviceSimulator/ControlServer.h"
#include "DeviceSimulator/Environment.h"

namespace DeviceSimulator {

namespace {

std::shared_ptr<const Library> MakeBuiltIn(const LibraryProgress&) {
    return MakeBuiltInLibrary();
}

}  // namespace

Engine::Engine() : m_standIns(std::make_shared<StandIns>()) {}

Engine& Engine::Instance() {
    static auto* const kEngine = new Engine;
    return *kEngine;
}

void Engine::EnsureStarted() {
    if (m_isStarted.load(std::memory_order_acquire)) {
        return;
    }
    const std::lock_guard lock(m_startMutex);
    if (m_isStarted.load(std::memory_order_relaxed)) {
        return;
    }
    m_loop.Reset(OptionsFromEnvironment(), std::make_shared<SteadyClock>());
    m_music.Reset(MakeLibraryFromEnvironment, [this] { m_loop.ClockMoved(); });
    if (const auto path = ControlPathFromEnvironment()) {
        m_control = ControlServer::Open(*path);
    }
    m_isStarted.store(true, std::memory_order_release);
}

void Engine::Reset(SimulatorOptions options, std::shared_ptr<const Clock> clock) {
    const std::lock_guard lock(m_startMutex);
    m_scripts.Clear();
    SetStandIns({});
    if (options.library != nullptr) {
        m_music.Reset(options.library);
    } else {
        m_music.Reset(MakeBuiltIn, [this] { m_loop.ClockMoved(); });
    }
    m_loop.Reset(std::move(options), std::move(clock));
    m_calls.Clear();
    m_isStarted.store(true, std::memory_order_release);
}

std::shared_ptr<const StandIns> Engine::CurrentStandIns() const {
    const std::lock_guard lock(m_standInMutex);
    return m_standIns;
}

void Engine::SetStandIns(StandIns standIns) {
    auto replacement = std::make_shared<const StandIns>(std::move(standIns));
    const std::lock_guard lock(m_standInMutex);
    m_standIns.swap(replacement);
}

}  // namespace DeviceSimulator
