#include "DeviceSimulator/client/Callbacks.h"

#include "DeviceSimulator/wire/Thread.h"

namespace DeviceSimulator {

Callbacks::Registering::Registering(std::shared_ptr<Callbacks> callbacks)
    : m_callbacks(std::move(callbacks)), m_order(std::make_shared<Order>()) {
    StartThread("devmgr-events", [all = m_callbacks, order = m_order] { all->Run(*order); }).detach();
    const std::lock_guard lock(m_callbacks->m_mutex);
    ++m_callbacks->m_registering;
}

Callbacks::Registering::~Registering() {
    const std::lock_guard lock(m_callbacks->m_mutex);
    --m_callbacks->m_registering;
    m_order->isOver = m_order->isOver || m_order->callback == nullptr;
    m_callbacks->m_changed.notify_all();
}

void Callbacks::Registering::Add(std::uint32_t process, DeviceEventCallback callback) {
    const std::lock_guard lock(m_callbacks->m_mutex);
    m_order->process = process;
    m_order->callback = callback;
    m_callbacks->m_orders[process] = m_order;
    m_callbacks->m_changed.notify_all();
}

void Callbacks::Run(Order& order) {
    t_own = &order;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [&] { return order.isOver || !order.events.empty(); });
        if (order.isOver) {
            return;
        }
        const DeviceEvent event = order.events.front();
        order.events.pop_front();
        order.isRunning = true;
        lock.unlock();
        order.callback(&event, order.process);
        lock.lock();
        order.isRunning = false;
        m_changed.notify_all();
    }
}

void Callbacks::Remove(std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    const auto found = m_orders.find(process);
    if (found == m_orders.end()) {
        return;
    }
    const auto order = found->second;
    m_orders.erase(found);
    order->isOver = true;
    if (t_own != nullptr) {
        t_own->isRemoving = true;
    }
    m_changed.notify_all();
    // Two that remove each other would wait for ever.
    m_changed.wait(lock, [&] {
        return !order->isRunning || t_own == order.get() || (t_own != nullptr && order->isRemoving);
    });
    if (t_own != nullptr) {
        t_own->isRemoving = false;
    }
}

void Callbacks::AwaitRegistrations() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_registering == 0; });
}

void Callbacks::Deliver(const DeviceEvent& event, std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_orders.count(process) != 0 || m_registering == 0; });
    const auto found = m_orders.find(process);
    if (found == m_orders.end()) {
        return;
    }
    const auto order = found->second;
    const auto isBehind = [&] { return !order->isOver && order->events.size() >= kMostWaiting; };
    m_changed.wait(lock, [&] { return m_waitsNoLonger || !isBehind(); });
    if (!isBehind()) {
        order->events.push_back(event);
        m_changed.notify_all();
    }
}

void Callbacks::WaitNoLonger() {
    const std::lock_guard lock(m_mutex);
    m_waitsNoLonger = true;
    m_changed.notify_all();
}

void Callbacks::DeliverToAll(const DeviceEvent& event) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_registering == 0; });
    for (const auto& entry : m_orders) {
        // Without a limit: nothing more comes, and nobody is to wait for one that hangs.
        entry.second->events.push_back(event);
    }
    m_changed.notify_all();
}

}  // namespace DeviceSimulator
