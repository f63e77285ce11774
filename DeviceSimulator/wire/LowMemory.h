// A range of addresses below 4 GiB, so that a number of 32 bits holds each of them.
#pragma once

#include <sys/mman.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace DeviceSimulator {

/// Of whole pages, and a page more behind them, which nobody may touch: what runs past the end is noticed at
/// once.
class LowMemory {
  public:
    /// Reserves room for `size` bytes, which are not to be touched yet. It is empty when there is none.
    explicit LowMemory(std::uint32_t size);

    /// 0 when it is empty.
    std::uint32_t Address() const {
        return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(m_start.get()));
    }
    std::uint8_t* Start() const { return static_cast<std::uint8_t*>(m_start.get()); }
    /// Puts memory there: what the descriptor's file holds; of -1, zeros. False when that cannot be had.
    bool Fill(int file);

  private:
    struct Unmap {
        std::size_t length;
        void operator()(void* start) const { munmap(start, length); }
    };

    std::unique_ptr<void, Unmap> m_start;
    std::uint32_t m_size;
};

}  // namespace DeviceSimulator
