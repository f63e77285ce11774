#include "DeviceSimulator/SharedMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace DeviceSimulator {

namespace {

constexpr std::uint64_t kAddressLimit = std::uint64_t{1} << 32U;

std::size_t PageSize() {
    return static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t MappedLength(std::uint32_t size) {
    const std::size_t page = PageSize();
    // One page more, which nobody may touch: what runs past the block's pages is noticed at once.
    return (size + page - 1) / page * page + page;
}

void* Address(std::uint32_t block) {
    // The interface hands addresses around as numbers.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    return reinterpret_cast<void*>(std::uintptr_t{block});
}

bool IsBelowLimit(const void* start, std::size_t length) {
    return std::uint64_t{reinterpret_cast<std::uintptr_t>(start)} + length <= kAddressLimit;
}

void* TryMap(void* hint, std::size_t length, int extraFlags) {
    void* start = mmap(hint, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | extraFlags, -1, 0);
    if (start == MAP_FAILED) {
        return nullptr;
    }
    if (!IsBelowLimit(start, length)) {
        munmap(start, length);
        return nullptr;
    }
    return start;
}

void* MapBelowLimit(std::size_t length) {
#ifdef MAP_32BIT
    return TryMap(nullptr, length, MAP_32BIT);
#else
    if (void* start = TryMap(nullptr, length, 0)) {
        return start;
    }
    constexpr std::uint64_t kFirstHint = 0x10000000;
    constexpr std::uint64_t kHintStep = 0x04000000;
    for (std::uint64_t hint = kFirstHint; hint + length <= kAddressLimit; hint += kHintStep) {
        if (void* start = TryMap(reinterpret_cast<void*>(static_cast<std::uintptr_t>(hint)), length, 0)) {
            return start;
        }
    }
    return nullptr;
#endif
}

}  // namespace

SharedMemory::~SharedMemory() {
    FreeAll();
}

DevMgrResult SharedMemory::Allocate(std::uint32_t process, std::uint32_t size, std::uint32_t& block) {
    if (size == 0 || size > kLargestBlock) {
        return DEV_MGR_WROG_SIZE_FOR_SHARED_MEMORY;
    }
    const auto owned = std::count_if(m_blocks.begin(), m_blocks.end(),
                                     [&](const auto& entry) { return entry.second.process == process; });
    if (static_cast<std::size_t>(owned) >= kMostBlocks) {
        return DEV_MGR_MEMORY_ERROR;
    }
    const std::size_t length = MappedLength(size);
    void* start = MapBelowLimit(length);
    if (start == nullptr) {
        return DEV_MGR_MEMORY_ERROR;
    }
    const std::size_t page = PageSize();
    mprotect(static_cast<char*>(start) + length - page, page, PROT_NONE);
    const auto address = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(start));
    m_blocks[address] = Block{process, size};
    block = address;
    return DEV_MGR_SUCCESS;
}

DevMgrResult SharedMemory::Free(std::uint32_t process, std::uint32_t block) {
    const auto found = m_blocks.find(block);
    if (found == m_blocks.end() || found->second.process != process) {
        return DEV_MGR_WROG_SHARED_MEMORY;
    }
    munmap(Address(block), MappedLength(found->second.size));
    m_blocks.erase(found);
    return DEV_MGR_SUCCESS;
}

void SharedMemory::FreeAll(std::uint32_t process) {
    std::erase_if(m_blocks, [&](const auto& entry) {
        const bool isOwned = entry.second.process == process;
        if (isOwned) {
            munmap(Address(entry.first), MappedLength(entry.second.size));
        }
        return isOwned;
    });
}

void SharedMemory::FreeAll() {
    for (const auto& [address, block] : m_blocks) {
        munmap(Address(address), MappedLength(block.size));
    }
    m_blocks.clear();
}

std::span<std::uint8_t> SharedMemory::Bytes(std::uint32_t process, std::uint32_t block) const {
    const auto found = m_blocks.find(block);
    if (found == m_blocks.end() || found->second.process != process) {
        return {};
    }
    return {static_cast<std::uint8_t*>(Address(block)), found->second.size};
}

}  // namespace DeviceSimulator
