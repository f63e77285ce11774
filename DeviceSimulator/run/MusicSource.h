// A library of the simulated player, and how far it is.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>

#include "DeviceSimulator/device/DatabaseBuild.h"
#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

/// Every member may be called from any thread.
class MusicSource {
  public:
    using Maker = std::function<std::shared_ptr<const Library>(const LibraryProgress&)>;

    /// Begins to make one by `maker`, on a thread of its own, from which `moved` is called when the progress
    /// has come to a further percentage.
    MusicSource(Maker maker, std::function<void()> moved);
    /// One that is there; not null.
    explicit MusicSource(std::shared_ptr<const Library> library);

    /// Also with a maker that fails it comes to 100.
    std::shared_ptr<const BuildProgress> Progress() const { return m_progress; }
    /// Waits for it. Never null: a maker that fails leaves an empty library.
    std::shared_ptr<const Library> Get() const { return std::shared_future(m_library).get(); }

  private:
    std::shared_ptr<BuildProgress> m_progress;
    std::shared_future<std::shared_ptr<const Library>> m_library;
};

}  // namespace DeviceSimulator
