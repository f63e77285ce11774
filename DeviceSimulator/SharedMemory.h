// The memory blocks that processes take: below 4 GiB, so that an address fits the interface's 32 bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>

#include "DeviceSimulator/Values.h"

namespace DeviceSimulator {

/// Not locked: the model's lock guards it.
class SharedMemory {
  public:
    static constexpr std::uint32_t kLargestBlock = 64U << 20U;
    static constexpr std::size_t kMostBlocks = 16;  ///< of one process

    SharedMemory() = default;
    ~SharedMemory();
    SharedMemory(const SharedMemory&) = delete;
    SharedMemory& operator=(const SharedMemory&) = delete;

    /// Zero-filled. `block` is written on success only; what is granted is what was asked for.
    DevMgrResult Allocate(std::uint32_t process, std::uint32_t size, std::uint32_t& block);
    DevMgrResult Free(std::uint32_t process, std::uint32_t block);
    void FreeAll(std::uint32_t process);
    void FreeAll();

    /// The granted bytes of a block of `process`; empty when it has no such block.
    std::span<std::uint8_t> Bytes(std::uint32_t process, std::uint32_t block) const;

  private:
    struct Block {
        std::uint32_t process;
        std::uint32_t size;
    };

    std::map<std::uint32_t, Block> m_blocks;  // by address
};

}  // namespace DeviceSimulator
