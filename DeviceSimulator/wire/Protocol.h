// What the library and the player say to each other over a Unix stream socket. Both run on one machine, so
// numbers and records travel as they lie in memory.
//
// A connection begins with a Hello and its HelloAnswer. One of kind Events is a client's life: the player
// sends EventMessages on it, and the client is over when it ends. On one of kind Calls the client sends a
// CallHead with the arguments behind it, and waits for an AnswerHead with what the call gives behind it.
// Calls overlap on as many of these as there are threads that call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace DeviceSimulator::Wire {

/// Raised when either side would misunderstand the other.
constexpr std::uint32_t kVersion = 1;
constexpr std::uint32_t kMagic = 0x79616c70;

enum class ConnectionKind : std::uint32_t { Events = 1, Calls = 2 };

struct Hello {
    std::uint32_t magic = kMagic;
    std::uint32_t version = kVersion;
    ConnectionKind kind = ConnectionKind::Events;
    std::uint32_t firstProcess = 0;  ///< process handles below it mean processes of an earlier player
    std::uint64_t client = 0;        ///< a number of the client's own that is hard to guess
};

struct HelloAnswer {
    std::uint32_t magic = kMagic;
    std::uint32_t version = kVersion;
    std::uint32_t isWelcome = 0;
    std::uint32_t unused = 0;
};

struct CallHead {
    std::uint32_t length = 0;  ///< of what follows
    std::uint32_t function = 0;
    std::uint64_t thread = 0;  ///< the kernel's number of the calling one
};

struct AnswerHead {
    std::uint32_t length = 0;  ///< of what follows; 0 unless the call succeeded
    std::uint32_t result = 0;
};

struct EventMessage {
    std::uint32_t process = 0;
    DeviceEvent event{};
};

/// Of Hello::firstProcess: handles do not come round to 0.
constexpr std::uint32_t kLastFirstProcess = 1U << 31U;
/// Of a call's arguments, whatever they are.
constexpr std::uint32_t kLongestCall = 8192;
/// Of a text in them; more of it is not sent.
constexpr std::uint32_t kLongestText = 4096;
/// Of the records of a list; more than that nobody wants.
constexpr std::uint32_t kMostRecords = 1U << 20U;

// Values put one behind another, and taken back.

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
