#include "DeviceSimulator/client/Callbacks.h"

namespace DeviceSimulator {

Callbacks::Registering::Registering(Callbacks& callbacks) : m_callbacks(callbacks) {
    const std::lock_guard lock(m_callbacks.m_mutex);
    ++m_callbacks.m_registering;
}

Callbacks::Registering::~Registering() {
    const std::lock_guard lock(m_callbacks.m_mutex);
    --m_callbacks.m_registering;
    m_callbacks.m_changed.notify_all();
}

void Callbacks::Add(std::uint32_t process, DeviceEventCallback callback) {
    const std::lock_guard lock(m_mutex);
    m_callbacks[process] = callback;
    m_changed.notify_all();
}

void Callbacks::Remove(std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    m_callbacks.erase(process);
    if (m_thread != std::this_thread::get_id()) {
        m_changed.wait(lock, [&] { return m_running != process; });
    }
}

std::vector<std::uint32_t> Callbacks::Processes() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_registering == 0; });
    std::vector<std::uint32_t> processes;
    for (const auto& entry : m_callbacks) {
        processes.push_back(entry.first);
    }
    return processes;
}

void Callbacks::Deliver(const DeviceEvent& event, std::uint32_t process) {
    std::unique_lock lock(m_mutex);
    m_thread = std::this_thread::get_id();
    m_changed.wait(lock, [&] { return m_callbacks.count(process) != 0 || m_registering == 0; });
    const auto found = m_callbacks.find(process);
    if (found == m_callbacks.end()) {
        return;
    }
    const DeviceEventCallback callback = found->second;
    m_running = process;
    lock.unlock();
    callback(&event, process);
    lock.lock();
    m_running = 0;
    m_changed.notify_all();
}

}  // namespace DeviceSimulator
