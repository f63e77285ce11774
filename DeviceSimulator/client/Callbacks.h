// The processes that this one has registered with a player, and the callbacks that hear of its events.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>

#include "DeviceManager/DeviceManager.h"

namespace DeviceSimulator {

/// Each process's callback runs on a thread of its own, in the order of its events: one that hangs holds up
/// no other until it is far behind. No lock is held while a callback runs. Every member may be called from
/// any thread, but for Deliver.
class Callbacks {
    /// One process's events.
    struct Order {
        std::uint32_t process = 0;
        DeviceEventCallback callback = nullptr;  ///< null until it is registered
        std::deque<DeviceEvent> events;
        bool isRunning = false;   ///< the callback
        bool isRemoving = false;  ///< the callback is inside Remove
        bool isOver = false;
    };

  public:
    /// How far a callback may be behind before all wait for it.
    static constexpr std::size_t kMostWaiting = 1024;

    /// While one lives a process is being registered: an event for one that is not known yet waits for it.
    class Registering {
      public:
        /// std::system_error when there is no thread to be had.
        explicit Registering(std::shared_ptr<Callbacks> callbacks);
        ~Registering();
        Registering(const Registering&) = delete;
        Registering& operator=(const Registering&) = delete;

        /// It has been registered.
        void Add(std::uint32_t process, DeviceEventCallback callback);

      private:
        const std::shared_ptr<Callbacks> m_callbacks;
        const std::shared_ptr<Order> m_order;
    };

    /// After it no callback of `process` runs any more, unless it is called from that, or from another that
    /// this one is just then removing.
    void Remove(std::uint32_t process);
    /// Waits for those that are being registered.
    void AwaitRegistrations();

    /// On one thread.
    void Deliver(const DeviceEvent& event, std::uint32_t process);
    /// From now on Deliver waits for nobody: what is too much for a callback that hangs is lost.
    void WaitNoLonger();
    /// Behind all that has been delivered, to every process and those that are being registered.
    void DeliverToAll(const DeviceEvent& event);

  private:
    void Run(Order& order);

    std::mutex m_mutex;  // guards all below
    std::condition_variable m_changed;
    std::map<std::uint32_t, std::shared_ptr<Order>> m_orders;
    int m_registering = 0;
    bool m_waitsNoLonger = false;
    static inline thread_local Order* t_own = nullptr;  // whose callback this thread runs
};

}  // namespace DeviceSimulator
