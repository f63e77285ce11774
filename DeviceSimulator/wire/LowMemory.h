// A range of addresses below 4 GiB, so that a number of 32 bits holds each of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace DeviceSimulator {

/// Of whole pages, and a page more behind them, which nobody may touch: what runs past the end is noticed at
/// once.
class LowMemory {
  public:
    LowMemory() = default;
    /// Reserves room for `size` bytes, which are not to be touched yet. It is empty when there is none.
    explicit LowMemory(std::uint32_t size);
    ~LowMemory();
    LowMemory(LowMemory&& other) noexcept
        : m_start(std::exchange(other.m_start, nullptr)), m_length(other.m_length), m_size(other.m_size) {}
    LowMemory& operator=(LowMemory&& other) noexcept {
        std::swap(m_start, other.m_start);
        std::swap(m_length, other.m_length);
        std::swap(m_size, other.m_size);
        return *this;
    }

    /// 0 when it is empty.
    std::uint32_t Address() const;
    std::uint8_t* Start() const { return static_cast<std::uint8_t*>(m_start); }
    std::uint32_t Size() const { return m_size; }
    /// Puts memory there: what the descriptor's file holds; of -1, zeros. False when that cannot be had.
    bool Fill(int file);

  private:
    void* m_start = nullptr;
    std::size_t m_length = 0;
    std::uint32_t m_size = 0;
};

}  // namespace DeviceSimulator
