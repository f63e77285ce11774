// Values put one behind another, and taken back.
#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

namespace DeviceSimulator::Wire {

using Bytes = std::vector<std::byte>;

template <typename T>
concept Flat = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>;

inline void PutBytes(Bytes& bytes, const void* start, std::size_t size) {
    const auto* const first = static_cast<const std::byte*>(start);
    bytes.insert(bytes.end(), first, first + size);
}

template <Flat T>
void Put(Bytes& bytes, const T& value) {
    PutBytes(bytes, &value, sizeof(value));
}

/// Takes what Put has put, in the same order. What is not there reads as zeros, and IsGood tells.
class Taker {
  public:
    explicit Taker(std::span<const std::byte> bytes) : m_left(bytes) {}

    template <Flat T>
    T Take() {
        T value{};
        const auto bytes = TakeBytes(sizeof(T));
        if (!bytes.empty()) {
            std::memcpy(&value, bytes.data(), sizeof(T));
        }
        return value;
    }
    /// Empty when there are not so many.
    std::span<const std::byte> TakeBytes(std::size_t size) {
        if (size > m_left.size()) {
            m_isGood = false;
            m_left = {};
            return {};
        }
        const auto taken = m_left.first(size);
        m_left = m_left.subspan(size);
        return taken;
    }
    bool IsGood() const { return m_isGood; }
    /// All has been there, and all has been taken.
    bool IsDone() const { return m_isGood && m_left.empty(); }

  private:
    std::span<const std::byte> m_left;
    bool m_isGood = true;
};

}  // namespace DeviceSimulator::Wire
