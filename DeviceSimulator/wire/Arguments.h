// How the arguments of a device-manager function travel, by their types alone:
//
// clang-format off
//     integer                in
//     u8*, u32*              in and out
//     record*                out; of BrowseItem and DeviceRecord a list, as long as the function's u32* says
//     char*, char**          a text in; a text out, the caller's to free()
//     DeviceEventCallback    whether there is one: it is the client's
// clang-format on
//
// A null pointer arrives as one. What goes out is sent after a success only.
#pragma once

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <tuple>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/wire/Protocol.h"

namespace DeviceSimulator::Wire {

template <typename T>
concept Number = std::integral<T> && !std::same_as<T, char>;
template <typename T>
concept ListRecord = std::same_as<T, BrowseItem> || std::same_as<T, DeviceRecord>;
template <typename T>
concept Record = Flat<T> && std::is_class_v<T> && !ListRecord<T>;

inline void PutFlag(Bytes& bytes, bool flag) {
    Put(bytes, static_cast<std::uint8_t>(flag));
}
inline bool TakeFlag(Taker& taker) {
    return taker.Take<std::uint8_t>() != 0;
}
/// Of a null pointer, an empty one.
inline void PutText(Bytes& bytes, const char* text) {
    const auto length = text != nullptr ? static_cast<std::uint32_t>(strnlen(text, kLongestText)) : 0;
    Put(bytes, length);
    PutBytes(bytes, text, length);
}
inline std::string TakeText(Taker& taker) {
    const auto bytes = taker.TakeBytes(taker.Take<std::uint32_t>());
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// At the client: Send puts what goes in, Receive takes what came out.

template <Number T>
void Send(Bytes& bytes, T value) {
    Put(bytes, value);
}
template <typename T>
void Send(Bytes& bytes, T* pointer) {
    PutFlag(bytes, pointer != nullptr);
    if constexpr (Number<T>) {
        // It may be meant to be written alone, and then be of any value.
        Put(bytes, pointer != nullptr ? *pointer : T{});
    }
}
inline void Send(Bytes& bytes, char* text) {
    PutFlag(bytes, text != nullptr);
    PutText(bytes, text);
}

/// How many records a list has room for.
template <typename T>
std::uint32_t Room(const T& argument) {
    if constexpr (std::is_same_v<T, u32*>) {
        return argument != nullptr ? *argument : 0;
    }
    return 0;
}

/// Nothing comes out of the others.
template <typename T>
void Receive(Taker&, T, std::uint32_t) {}
template <Flat T>
requires(!std::same_as<T, char>) void Receive(Taker& taker, T* pointer, std::uint32_t room) {
    if (pointer == nullptr) {
        return;
    }
    if constexpr (ListRecord<T>) {
        const auto bytes =
            taker.TakeBytes(sizeof(T) * std::size_t{std::min(taker.Take<std::uint32_t>(), room)});
        if (!bytes.empty()) {
            std::memcpy(pointer, bytes.data(), bytes.size());
        }
    } else {
        *pointer = taker.Take<T>();
    }
}
inline void Receive(Taker& taker, char** pointer, std::uint32_t) {
    if (pointer != nullptr) {
        *pointer = TakeFlag(taker) ? strdup(TakeText(taker).c_str()) : nullptr;
    }
}

// At the player: what a call works on in the caller's place.

struct HeldPointer {
    bool isThere = false;
    void Read(Taker& taker) { isThere = TakeFlag(taker); }
    /// Puts what came out at the pointer, which is there; of a list so many records.
    void Answer(Bytes&, std::uint32_t) const {}
};

template <typename T>
struct Held;

template <Number T>
struct Held<T> : HeldPointer {
    T value{};
    void Read(Taker& taker) { value = taker.Take<T>(); }
    T Get(std::uint32_t) { return value; }
};

template <typename T>
requires(Number<T> || Record<T>) struct Held<T*> : HeldPointer {
    T value{};
    void Read(Taker& taker) {
        HeldPointer::Read(taker);
        if constexpr (Number<T>) {
            value = taker.Take<T>();
        }
    }
    T* Get(std::uint32_t) { return isThere ? &value : nullptr; }
    void Answer(Bytes& bytes, std::uint32_t) const { Put(bytes, value); }
};

template <ListRecord T>
struct Held<T*> : HeldPointer {
    std::unique_ptr<T[]> records;
    T* Get(std::uint32_t room) {
        if (isThere) {
            // Not cleared: of a large room most is never touched.
            records = std::make_unique_for_overwrite<T[]>(std::size_t{room} + 1);
        }
        return records.get();
    }
    void Answer(Bytes& bytes, std::uint32_t count) const {
        Put(bytes, count);
        PutBytes(bytes, records.get(), sizeof(T) * std::size_t{count});
    }
};

template <>
struct Held<char*> : HeldPointer {
    std::string text;
    void Read(Taker& taker) {
        HeldPointer::Read(taker);
        text = TakeText(taker);
    }
    char* Get(std::uint32_t) { return isThere ? text.data() : nullptr; }
};

template <>
struct Held<char**> : HeldPointer {
    char* text = nullptr;
    Held() = default;
    ~Held() { std::free(text); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    char** Get(std::uint32_t) { return isThere ? &text : nullptr; }
    void Answer(Bytes& bytes, std::uint32_t) const {
        PutFlag(bytes, text != nullptr);
        if (text != nullptr) {
            PutText(bytes, text);
        }
    }
};

template <>
struct Held<DeviceEventCallback> : HeldPointer {
    /// What it is called for is the client's; this one stands for "not null".
    static void Ignore(const DeviceEvent*, u32) {}
    DeviceEventCallback Get(std::uint32_t) { return isThere ? &Ignore : nullptr; }
};

template <typename... Arguments>
constexpr bool kHasList = (ListRecord<std::remove_pointer_t<Arguments>> || ...);

/// Calls `function` with what has come from the client, and puts what it gives into `answer`. None: what came
/// is not what goes in.
template <typename... Arguments>
std::optional<std::uint32_t> Carry(u32 (*function)(Arguments...), Taker& taker, Bytes& answer) {
    std::tuple<Held<Arguments>...> held;
    std::apply([&](auto&... each) { (each.Read(taker), ...); }, held);
    if (!taker.IsDone()) {
        return std::nullopt;
    }
    std::uint32_t* count = nullptr;
    if constexpr (kHasList<Arguments...>) {
        count = std::get<Held<u32*>>(held).Get(0);
    }
    if (count != nullptr) {
        *count = std::min(*count, kMostRecords);
    }
    const std::uint32_t room = count != nullptr ? *count : 0;
    return std::apply(
        [&](auto&... each) {
            const std::uint32_t result = function(each.Get(room)...);
            const std::uint32_t given = count != nullptr ? std::min(*count, room) : 0;
            if (result == DEV_MGR_SUCCESS) {
                ((each.isThere ? each.Answer(answer, given) : void()), ...);
            }
            return result;
        },
        held);
}

}  // namespace DeviceSimulator::Wire
