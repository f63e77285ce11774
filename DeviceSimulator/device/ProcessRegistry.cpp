#include "DeviceSimulator/device/ProcessRegistry.h"

namespace DeviceSimulator {

std::uint32_t ProcessRegistry::Add(std::shared_ptr<EventListener> listener) {
    if (m_listeners.size() >= kMostProcesses) {
        return 0;
    }
    const std::uint32_t handle = m_nextHandle++;
    m_listeners.emplace(handle, std::move(listener));
    return handle;
}

std::shared_ptr<EventListener> ProcessRegistry::Listener(std::uint32_t process) const {
    const auto found = m_listeners.find(process);
    return found == m_listeners.end() ? nullptr : found->second;
}

std::size_t ProcessRegistry::Waiting() const {
    std::size_t most = 0;
    for (const auto& entry : m_listeners) {
        most = std::max(most, entry.second->Waiting());
    }
    return most;
}

std::vector<std::uint32_t> ProcessRegistry::Handles() const {
    std::vector<std::uint32_t> handles;
    for (const auto& entry : m_listeners) {
        handles.push_back(entry.first);
    }
    return handles;
}

}  // namespace DeviceSimulator
