#include "DeviceSimulator/run/MusicSource.h"

#include <cstdio>
#include <exception>
#include <utility>

#include "DeviceSimulator/wire/Thread.h"

namespace DeviceSimulator {

namespace {

std::shared_ptr<const Library> Make(const MusicSource::Maker& maker, const LibraryProgress& progress) {
    try {
        if (auto library = maker(progress)) {
            return library;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "device simulator: no music library: %s\n", error.what());
    }
    return MakeSyntheticLibrary(0);
}

}  // namespace

void MusicSource::Reset(Maker maker, std::function<void()> moved) {
    const std::lock_guard lock(m_mutex);
    m_maker = std::move(maker);
    m_moved = std::move(moved);
    m_library = {};
}

void MusicSource::Reset(std::shared_ptr<const Library> library) {
    std::promise<std::shared_ptr<const Library>> promise;
    promise.set_value(std::move(library));
    const std::lock_guard lock(m_mutex);
    m_library = promise.get_future().share();
    m_progress = std::make_shared<BuildProgress>(100);
}

std::shared_ptr<const BuildProgress> MusicSource::Progress() {
    const std::lock_guard lock(m_mutex);
    Start();
    return m_progress;
}

std::shared_ptr<const Library> MusicSource::Get() {
    std::unique_lock lock(m_mutex);
    Start();
    const Future library = m_library;
    lock.unlock();
    return library.get();
}

void MusicSource::Start() {
    if (m_library.valid()) {
        return;
    }
    auto progress = std::make_shared<BuildProgress>(0);
    const auto move = [progress, moved = m_moved](std::uint32_t percentage) {
        // A scan that has to begin again tells of what has been told.
        if (percentage > progress->load()) {
            progress->store(percentage);
            moved();
        }
    };
    std::packaged_task<std::shared_ptr<const Library>()> build(
        [maker = m_maker, move] { return Make(maker, move); });
    Future library = build.get_future().share();
    StartThread("devmgr-library", [build = std::move(build), move]() mutable {
        build();
        move(100);
    }).detach();
    m_library = std::move(library);
    m_progress = std::move(progress);
}

}  // namespace DeviceSimulator
