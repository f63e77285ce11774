#include "DeviceSimulator/ProcessRegistry.h"

namespace DeviceSimulator {

std::uint32_t ProcessRegistry::Add(DeviceEventCallback callback) {
    if (m_callbacks.size() >= kMostProcesses) {
        return 0;
    }
    const std::uint32_t handle = m_nextHandle++;
    m_callbacks.emplace(handle, callback);
    return handle;
}

DeviceEventCallback ProcessRegistry::Callback(std::uint32_t process) const {
    const auto found = m_callbacks.find(process);
    return found == m_callbacks.end() ? nullptr : found->second;
}

std::vector<std::uint32_t> ProcessRegistry::Handles() const {
    std::vector<std::uint32_t> handles;
    for (const auto& entry : m_callbacks) {
        handles.push_back(entry.first);
    }
    return handles;
}

}  // namespace DeviceSimulator
