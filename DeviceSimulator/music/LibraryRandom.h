// Numbers that look like chance and are the same on every machine and at every start.
#pragma once

#include <cstdint>
#include <string_view>

namespace DeviceSimulator {

/// SplitMix64; the standard library's distributions differ from one implementation to the next.
class LibraryRandom {
  public:
    explicit LibraryRandom(std::uint64_t seed) : m_state(seed) {}
    /// Seeded by a text (FNV-1a).
    explicit LibraryRandom(std::string_view seed) : m_state(0xCBF29CE484222325U) {
        for (const char c : seed) {
            m_state = (m_state ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
        }
    }

    /// 0 to `limit` - 1; `limit` is at least 1.
    std::uint32_t Below(std::uint32_t limit) {
        m_state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = m_state;
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
        return static_cast<std::uint32_t>((z ^ (z >> 31)) % limit);
    }

  private:
    std::uint64_t m_state;
};

}  // namespace DeviceSimulator
