// The library of the simulated player, built when it is first wanted.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <mutex>

#include "DeviceSimulator/device/DatabaseBuild.h"
#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

/// Every member may be called from any thread.
class MusicSource {
  public:
    using Maker = std::function<std::shared_ptr<const Library>(const LibraryProgress&)>;

    /// What is to be built from now on, by `maker`, on a thread of its own, from which `moved` is called when
    /// the progress has come to a further percentage.
    void Reset(Maker maker, std::function<void()> moved);
    /// What there is from now on; not null.
    void Reset(std::shared_ptr<const Library> library);
    /// Begins to build unless that has begun.
    void Prepare() { Progress(); }
    /// The same, and how far it is; also with a maker that fails it comes to 100.
    std::shared_ptr<const BuildProgress> Progress();
    /// Waits for it. Never null: a maker that fails leaves an empty library.
    std::shared_ptr<const Library> Get();

  private:
    using Future = std::shared_future<std::shared_ptr<const Library>>;

    void Start();

    std::mutex m_mutex;  // guards all below
    Maker m_maker;
    std::function<void()> m_moved;
    std::shared_ptr<BuildProgress> m_progress;
    Future m_library;  // not valid until it has begun
};

}  // namespace DeviceSimulator
