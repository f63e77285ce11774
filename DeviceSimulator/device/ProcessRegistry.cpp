#include "DeviceSimulator/device/ProcessRegistry.h"

#include <utility>

namespace DeviceSimulator {

std::uint32_t ProcessRegistry::Add(std::shared_ptr<EventListener> listener) {
    if (m_processes.size() >= kMostProcesses) {
        return 0;
    }
    m_processes.emplace(m_nextHandle, Process{std::move(listener)});
    return m_nextHandle++;
}

std::shared_ptr<EventListener> ProcessRegistry::Listener(std::uint32_t process) const {
    const auto found = m_processes.find(process);
    return found == m_processes.end() ? nullptr : found->second.listener;
}

std::size_t ProcessRegistry::Waiting() const {
    std::size_t most = 0;
    for (const auto& [handle, process] : m_processes) {
        most = std::max(most, process.listener->Waiting());
    }
    return most;
}

std::vector<std::uint32_t> ProcessRegistry::Handles() const {
    std::vector<std::uint32_t> handles;
    for (const auto& entry : m_processes) {
        handles.push_back(entry.first);
    }
    return handles;
}

DevMgrResult ProcessRegistry::Allocate(std::uint32_t process, std::uint32_t size, const MapBlock& map,
                                       std::uint32_t& block) {
    const auto found = m_processes.find(process);
    if (found == m_processes.end()) {
        return DEV_MGR_PROCESS_NOT_REGISTERED;
    }
    auto& blocks = found->second.blocks;
    if (size == 0 || size > kLargestBlock) {
        return DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY;
    }
    const auto mapped = blocks.size() < kMostBlocks ? map(size) : std::nullopt;
    if (!mapped || !blocks.try_emplace(mapped->address, *mapped).second) {
        return DEV_MGR_MEMORY_ERROR;
    }
    block = mapped->address;
    return DEV_MGR_SUCCESS;
}

DevMgrResult ProcessRegistry::Free(std::uint32_t process, std::uint32_t block) {
    const auto found = m_processes.find(process);
    if (found == m_processes.end()) {
        return DEV_MGR_PROCESS_NOT_REGISTERED;
    }
    return found->second.blocks.erase(block) != 0 ? DEV_MGR_SUCCESS : DEV_MGR_WROG_SHARED_MEMORY;
}

std::span<std::uint8_t> ProcessRegistry::Bytes(std::uint32_t process, std::uint32_t block) const {
    const auto found = m_processes.find(process);
    if (found == m_processes.end() || found->second.blocks.count(block) == 0) {
        return {};
    }
    return found->second.blocks.at(block).bytes;
}

}  // namespace DeviceSimulator
