#include "DeviceSimulator/client/Callbacks.h"

#include <deque>

#include "DeviceSimulator/wire/Thread.h"

namespace DeviceSimulator {

/// One process's events. Its thread shares it and lives until it is over.
struct Callbacks::Order {
    std::mutex mutex;  // guards all below
    std::condition_variable changed;
    std::uint32_t process = 0;
    DeviceEventCallback callback = nullptr;
    std::deque<DeviceEvent> events;
    bool isRunning = false;  // the callback
    bool isOver = false;

    void Run();
    void Put(const DeviceEvent& event, std::size_t most);
    void End();
};

namespace {

/// Whose callback this thread runs.
thread_local const void* t_order = nullptr;

}  // namespace

void Callbacks::Order::Run() {
    t_order = this;
    std::unique_lock lock(mutex);
    for (;;) {
        changed.wait(lock, [this] { return isOver || !events.empty(); });
        if (isOver) {
            return;
        }
        const DeviceEvent event = events.front();
        events.pop_front();
        isRunning = true;
        lock.unlock();
        callback(&event, process);
        lock.lock();
        isRunning = false;
        changed.notify_all();
    }
}

/// Waits until less than `most` wait.
void Callbacks::Order::Put(const DeviceEvent& event, std::size_t most) {
    std::unique_lock lock(mutex);
    changed.wait(lock, [&] { return isOver || events.size() < most; });
    events.push_back(event);
    changed.notify_all();
}

void Callbacks::Order::End() {
    std::unique_lock lock(mutex);
    isOver = true;
    changed.notify_all();
    changed.wait(lock, [this] { return !isRunning || t_order == this; });
}

Callbacks::Registering::Registering(Callbacks& callbacks)
    : m_callbacks(callbacks), m_order(std::make_shared<Order>()) {
    StartThread("devmgr-events", [order = m_order] { order->Run(); }).detach();
    const std::lock_guard lock(m_callbacks.m_mutex);
    ++m_callbacks.m_registering;
}

Callbacks::Registering::~Registering() {
    if (m_order != nullptr) {
        m_order->End();
    }
    const std::lock_guard lock(m_callbacks.m_mutex);
    --m_callbacks.m_registering;
    m_callbacks.m_changed.notify_all();
}

void Callbacks::Registering::Add(std::uint32_t process, DeviceEventCallback callback) {
    const std::lock_guard lock(m_callbacks.m_mutex);
    {
        const std::lock_guard orderLock(m_order->mutex);
        m_order->process = process;
        m_order->callback = callback;
    }
    m_callbacks.m_orders[process] = std::exchange(m_order, nullptr);
    m_callbacks.m_changed.notify_all();
}

void Callbacks::Remove(std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    const auto found = m_orders.find(process);
    if (found == m_orders.end()) {
        return;
    }
    const auto order = found->second;
    m_orders.erase(found);
    lock.unlock();
    order->End();
}

void Callbacks::AwaitRegistrations() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_registering == 0; });
}

void Callbacks::Deliver(const DeviceEvent& event, std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_orders.count(process) != 0 || m_registering == 0; });
    const auto found = m_orders.find(process);
    if (found != m_orders.end()) {
        const auto order = found->second;
        lock.unlock();
        order->Put(event, kMostWaiting);
    }
}

void Callbacks::DeliverToAll(const DeviceEvent& event) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_registering == 0; });
    for (const auto& entry : m_orders) {
        // Without a limit: nothing more comes, and nobody is to wait for one that hangs.
        entry.second->Put(event, SIZE_MAX);
    }
}

}  // namespace DeviceSimulator
