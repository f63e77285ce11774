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

MusicSource::MusicSource(Maker maker, std::function<void()> moved)
    : m_progress(std::make_shared<BuildProgress>(0)) {
    const auto move = [progress = m_progress, moved = std::move(moved)](std::uint32_t percentage) {
        // A scan that has to begin again tells of what has been told.
        if (percentage > progress->load()) {
            progress->store(percentage);
            moved();
        }
    };
    std::packaged_task<std::shared_ptr<const Library>()> build(
        [maker = std::move(maker), move] { return Make(maker, move); });
    m_library = build.get_future().share();
    StartThread("devmgr-library", [build = std::move(build), move]() mutable {
        build();
        move(100);
    }).detach();
}

MusicSource::MusicSource(std::shared_ptr<const Library> library)
    : m_progress(std::make_shared<BuildProgress>(100)) {
    std::promise<std::shared_ptr<const Library>> promise;
    promise.set_value(std::move(library));
    m_library = promise.get_future().share();
}

}  // namespace DeviceSimulator
