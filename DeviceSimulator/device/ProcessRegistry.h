// The processes that have registered, and the memory blocks that they take.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace DeviceSimulator {

/// Is told what happens.
class EventListener {
  public:
    virtual ~EventListener() = default;
    /// Called without any lock, one event at a time.
    virtual void OnEvent(const DeviceEvent& event, std::uint32_t process) = 0;
    /// How many events it has been told of and not passed on yet. Any thread, under the model's lock.
    virtual std::size_t Waiting() { return 0; }
};

/// A block's memory, which lives as long as `owner`.
struct MappedBlock {
    std::uint32_t address = 0;  ///< in the process that it is for: the block's name
    std::span<std::uint8_t> bytes;
    std::shared_ptr<void> owner;
};

/// Maps so many bytes, zero-filled; none when there is no room.
using MapBlock = std::function<std::optional<MappedBlock>(std::uint32_t size)>;

/// Not locked: the model's lock guards it. A handle is never given twice.
class ProcessRegistry {
  public:
    static constexpr std::size_t kMostProcesses = 8;
    static constexpr std::uint32_t kLargestBlock = 64U << 20U;
    static constexpr std::size_t kMostBlocks = 16;  ///< of one process

    /// 0 when there are too many already.
    std::uint32_t Add(std::shared_ptr<EventListener> listener);
    /// No handle below `handle` is given from now on.
    void SkipTo(std::uint32_t handle) { m_nextHandle = std::max(m_nextHandle, handle); }
    /// With it go its blocks. False when it is not registered.
    bool Remove(std::uint32_t process) { return m_processes.erase(process) != 0; }
    void Clear() { m_processes.clear(); }

    bool Contains(std::uint32_t process) const { return m_processes.count(process) != 0; }
    /// Null when it is not registered.
    std::shared_ptr<EventListener> Listener(std::uint32_t process) const;
    /// Of the one that is furthest behind.
    std::size_t Waiting() const;
    std::vector<std::uint32_t> Handles() const;

    /// `block` is written on success only; what is granted is what was asked for.
    DevMgrResult Allocate(std::uint32_t process, std::uint32_t size, const MapBlock& map,
                          std::uint32_t& block);
    DevMgrResult Free(std::uint32_t process, std::uint32_t block);
    /// The granted bytes; empty when `process` has no such block.
    std::span<std::uint8_t> Bytes(std::uint32_t process, std::uint32_t block) const;

  private:
    struct Process {
        std::shared_ptr<EventListener> listener;
        std::map<std::uint32_t, MappedBlock> blocks{};  // by address
    };

    // Apart from where device handles begin, so that one taken for the other is noticed.
    static constexpr std::uint32_t kFirstHandle = 101;

    std::map<std::uint32_t, Process> m_processes;
    std::uint32_t m_nextHandle = kFirstHandle;
};

}  // namespace DeviceSimulator
