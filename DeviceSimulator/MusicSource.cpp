#include "DeviceSimulator/MusicSource.h"

#include <cstdio>
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

std::shared_ptr<const Library> Make(const MusicSource::Maker& maker) {
    try {
        if (auto library = maker()) {
            return library;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "device simulator: no music library: %s\n", error.what());
    }
    return std::make_shared<EmptyLibrary>();
}

}  // namespace

void MusicSource::Reset(Maker maker) {
    const std::lock_guard lock(m_mutex);
    m_maker = std::move(maker);
    m_library = {};
}

void MusicSource::Prepare() {
    Start();
}

std::shared_ptr<const Library> MusicSource::Get() {
    return Start().get();
}

MusicSource::Future MusicSource::Start() {
    const std::lock_guard lock(m_mutex);
    if (!m_library.valid()) {
        std::packaged_task<std::shared_ptr<const Library>()> build([maker = m_maker] { return Make(maker); });
        Future library = build.get_future().share();
        StartThread("devmgr-library", std::move(build)).detach();
        m_library = std::move(library);
    }
    return m_library;
}

}  // namespace DeviceSimulator
