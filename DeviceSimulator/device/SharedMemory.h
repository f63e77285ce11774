// The memory blocks that processes take.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include "DeviceSimulator/device/DeviceTypes.h"

namespace DeviceSimulator {

/// A block's memory, which lives as long as `owner`.
struct MappedBlock {
    std::uint32_t address = 0;  ///< in the process that it is for: the block's name
    std::span<std::uint8_t> bytes;
    std::shared_ptr<void> owner;
};

/// Maps so many bytes, zero-filled; none when there is no room.
using MapBlock = std::function<std::optional<MappedBlock>(std::uint32_t size)>;

/// Not locked: the model's lock guards it.
class SharedMemory {
  public:
    static constexpr std::uint32_t kLargestBlock = 64U << 20U;
    static constexpr std::size_t kMostBlocks = 16;  ///< of one process

    /// `block` is written on success only; what is granted is what was asked for.
    DevMgrResult Allocate(std::uint32_t process, std::uint32_t size, const MapBlock& map,
                          std::uint32_t& block);
    DevMgrResult Free(std::uint32_t process, std::uint32_t block);
    void FreeAll(std::uint32_t process);
    void FreeAll() { m_blocks.clear(); }

    /// The granted bytes of a block of `process`; empty when it has no such block.
    std::span<std::uint8_t> Bytes(std::uint32_t process, std::uint32_t block) const;

  private:
    /// Two processes may have blocks at one address.
    using Key = std::pair<std::uint32_t, std::uint32_t>;

    std::map<Key, MappedBlock> m_blocks;
};

}  // namespace DeviceSimulator
