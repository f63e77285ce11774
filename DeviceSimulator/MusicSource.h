// The library of the simulated player, built when it is first wanted.
#pragma once

#include <functional>
#include <future>
#include <memory>
#include <mutex>

#include "DeviceSimulator/Library.h"

namespace DeviceSimulator {

/// Every member may be called from any thread.
class MusicSource {
  public:
    using Maker = std::function<std::shared_ptr<const Library>()>;

    /// What is to be built from now on, by `maker`, on a thread of its own.
    void Reset(Maker maker);
    /// Begins to build unless that has begun.
    void Prepare();
    /// Waits for it. Never null: a maker that fails leaves an empty library.
    std::shared_ptr<const Library> Get();

  private:
    using Future = std::shared_future<std::shared_ptr<const Library>>;

    Future Start();

    std::mutex m_mutex;
    Maker m_maker;
    Future m_library;
};

}  // namespace DeviceSimulator
