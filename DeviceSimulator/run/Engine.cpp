#include "DeviceSimulator/run/Engine.h"

#include <utility>

namespace DeviceSimulator {

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
    {
        // Before the loop is at work: what is plugged then asks for its music.
        const std::lock_guard musicLock(m_musicMutex);
        m_isInEnvironment = true;
    }
    m_loop.Reset(OptionsFromEnvironment(), {});
    m_isStarted.store(true, std::memory_order_release);
}

void Engine::Reset(SimulatorOptions options, Clock clock) {
    const std::lock_guard lock(m_startMutex);
    m_scripts.Clear();
    m_scripts.SetStandIns({});
    {
        const std::lock_guard musicLock(m_musicMutex);
        m_music.clear();
        m_isInEnvironment = false;
        m_library = options.library;
    }
    m_loop.Reset(std::move(options), std::move(clock));
    m_calls.Clear();
    m_isStarted.store(true, std::memory_order_release);
}

std::shared_ptr<MusicSource> Engine::Music(const MusicChoice& choice) {
    const std::lock_guard lock(m_musicMutex);
    std::shared_ptr<MusicSource>& source = m_music[choice];
    if (source != nullptr) {
        return source;
    }
    source = std::make_shared<MusicSource>();
    const bool isDefault = choice == MusicChoice{};
    if (isDefault && m_library != nullptr) {
        source->Reset(m_library);
    } else {
        const bool isBuiltIn = isDefault && !m_isInEnvironment;
        source->Reset(
            [=](const LibraryProgress& progress) -> std::shared_ptr<const Library> {
                return isBuiltIn ? MakeBuiltInLibrary() : MakeChosenLibrary(choice, progress);
            },
            [this] { m_loop.ClockMoved(); });
    }
    return source;
}

}  // namespace DeviceSimulator
