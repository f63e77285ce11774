// The processes that this one has registered with a player, and the callbacks that hear of its events.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace DeviceSimulator {

/// Every member may be called from any thread, but for Deliver. No lock is held while a callback runs.
class Callbacks {
  public:
    /// While one lives a process is being registered: an event for one that is not known yet waits for it.
    class Registering {
      public:
        explicit Registering(Callbacks& callbacks);
        ~Registering();
        Registering(const Registering&) = delete;
        Registering& operator=(const Registering&) = delete;

      private:
        Callbacks& m_callbacks;
    };

    void Add(std::uint32_t process, DeviceEventCallback callback);
    /// After it no callback of `process` runs any more, unless it is called from one.
    void Remove(std::uint32_t process);
    /// Waits for those that are being registered.
    std::vector<std::uint32_t> Processes();

    /// On one thread.
    void Deliver(const DeviceEvent& event, std::uint32_t process);

  private:
    std::mutex m_mutex;  // guards all below
    std::condition_variable m_changed;
    std::map<std::uint32_t, DeviceEventCallback> m_callbacks;
    int m_registering = 0;
    std::uint32_t m_running = 0;  // whose callback runs; 0: none
    std::thread::id m_thread;     // that delivers
};

}  // namespace DeviceSimulator
