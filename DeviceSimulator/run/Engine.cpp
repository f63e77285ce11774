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
    Start(OptionsFromEnvironment(), {},
          [](const LibraryProgress& progress) { return MakeChosenLibrary({}, progress); });
}

void Engine::Reset(SimulatorOptions options, Clock clock, MusicSource::Maker maker) {
    const std::lock_guard lock(m_startMutex);
    m_scripts.Clear();
    m_scripts.SetStandIns({});
    Start(std::move(options), std::move(clock), std::move(maker));
    m_calls.Clear();
}

void Engine::Start(SimulatorOptions options, Clock clock, MusicSource::Maker maker) {
    {
        // Before the loop is at work: what is plugged then asks for its music.
        const std::lock_guard lock(m_musicMutex);
        m_music.clear();
        m_maker = std::move(maker);
        m_library = options.library;
    }
    m_loop.Reset(std::move(options), std::move(clock));
    m_isStarted.store(true, std::memory_order_release);
}

std::shared_ptr<MusicSource> Engine::Music(const MusicChoice& choice) {
    const std::lock_guard lock(m_musicMutex);
    std::shared_ptr<MusicSource>& source = m_music[choice];
    const bool isChosen = choice != MusicChoice{};
    if (source == nullptr && !isChosen && m_library != nullptr) {
        source = std::make_shared<MusicSource>(m_library);
    } else if (source == nullptr) {
        const auto make = [choice](const LibraryProgress& progress) {
            return MakeChosenLibrary(choice, progress);
        };
        source = std::make_shared<MusicSource>(isChosen ? make : m_maker, [this] { m_loop.ClockMoved(); });
    }
    return source;
}

}  // namespace DeviceSimulator
