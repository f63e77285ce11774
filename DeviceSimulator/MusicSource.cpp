#include "DeviceSimulator/MusicSource.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

#include "DeviceSimulator/Thread.h"

namespace DeviceSimulator {

namespace {

class EmptyLibrary : public Library {
  public:
    std::size_t TrackCount() const override { return 0; }
    TrackInfo Track(std::uint32_t) const override { return {}; }
    std::shared_ptr<const ItemList> Items(const std::vector<PathStep>&, std::uint32_t) const override {
        return std::make_shared<ItemList>();
    }
    std::string_view ItemName(std::uint32_t, std::uint32_t) const override { return {}; }
    std::shared_ptr<const Picture> Cover(std::uint32_t) const override { return nullptr; }
};

/// What a maker is cut off with.
struct ProcessEnds {};

/// The threads that make libraries. One that went on while the process ends would work with what has been
/// torn down, so the process waits for them, and they stop at their next step.
class Makers {
  public:
    /// Never destroyed, as they come to their end last.
    static Makers& Instance() {
        static auto* const kMakers = new Makers;
        return *kMakers;
    }

    /// One of them runs until the last copy of the result has gone.
    std::shared_ptr<void> Enter() {
        static const int kIsRegistered = std::atexit([] { Instance().Stop(); });
        static_cast<void>(kIsRegistered);
        const std::lock_guard lock(m_mutex);
        ++m_count;
        return {this, [](Makers* makers) { makers->Leave(); }};
    }
    bool IsOver() const { return m_isOver.load(); }

  private:
    void Leave() {
        const std::lock_guard lock(m_mutex);
        --m_count;
        m_left.notify_all();
    }
    void Stop() {
        constexpr std::chrono::seconds kPatience{1};
        std::unique_lock lock(m_mutex);
        m_isOver = true;
        m_left.wait_for(lock, kPatience, [this] { return m_count == 0; });
    }

    std::atomic<bool> m_isOver{false};
    std::mutex m_mutex;
    std::condition_variable m_left;
    int m_count = 0;  // under m_mutex
};

std::shared_ptr<const Library> Make(const MusicSource::Maker& maker, const LibraryProgress& progress) {
    try {
        if (auto library = maker(progress)) {
            return library;
        }
    } catch (const ProcessEnds&) {
        // Nobody asks for it any more.
    } catch (const std::exception& error) {
        std::fprintf(stderr, "device simulator: no music library: %s\n", error.what());
    }
    return std::make_shared<EmptyLibrary>();
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

void MusicSource::Prepare() {
    const std::lock_guard lock(m_mutex);
    Start();
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
    const LibraryProgress step = [move](std::uint32_t percentage) {
        if (Makers::Instance().IsOver()) {
            throw ProcessEnds{};
        }
        move(percentage);
    };
    std::packaged_task<std::shared_ptr<const Library>()> build(
        [maker = m_maker, step] { return Make(maker, step); });
    Future library = build.get_future().share();
    StartThread("devmgr-library", [build = std::move(build), move,
                                   entry = Makers::Instance().Enter()]() mutable {
        build();
        if (!Makers::Instance().IsOver()) {
            move(100);
        }
        entry.reset();
    }).detach();
    m_library = std::move(library);
    m_progress = std::move(progress);
}

}  // namespace DeviceSimulator
