#include "DeviceSimulator/device/SharedMemory.h"

#include <algorithm>

namespace DeviceSimulator {

DevMgrResult SharedMemory::Allocate(std::uint32_t process, std::uint32_t size, const MapBlock& map,
                                    std::uint32_t& block) {
    if (size == 0 || size > kLargestBlock) {
        return DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY;
    }
    const auto owned = std::count_if(m_blocks.begin(), m_blocks.end(),
                                     [&](const auto& entry) { return entry.first.first == process; });
    if (static_cast<std::size_t>(owned) >= kMostBlocks) {
        return DEV_MGR_MEMORY_ERROR;
    }
    auto mapped = map(size);
    if (!mapped || !m_blocks.try_emplace({process, mapped->address}, *mapped).second) {
        return DEV_MGR_MEMORY_ERROR;
    }
    block = mapped->address;
    return DEV_MGR_SUCCESS;
}

DevMgrResult SharedMemory::Free(std::uint32_t process, std::uint32_t block) {
    return m_blocks.erase({process, block}) != 0 ? DEV_MGR_SUCCESS : DEV_MGR_WROG_SHARED_MEMORY;
}

void SharedMemory::FreeAll(std::uint32_t process) {
    std::erase_if(m_blocks, [&](const auto& entry) { return entry.first.first == process; });
}

std::span<std::uint8_t> SharedMemory::Bytes(std::uint32_t process, std::uint32_t block) const {
    const auto found = m_blocks.find({process, block});
    return found == m_blocks.end() ? std::span<std::uint8_t>{} : found->second.bytes;
}

}  // namespace DeviceSimulator
