// The one way through which every C function goes: it keeps the record of the call, does what scripts and
// stand-ins ask for, and lets no exception out.
//
// What the model answers stands in the namespace Answers, in a function of the same name. It begins with what
// it works on:
//
// clang-format off
//     Engine&, the parameters                     locks the model itself, and checks all of its arguments
//     ManagerModel&, TimePoint, the parameters    under the model's lock; the process is registered
//     Device&, TimePoint, those behind dh         under the model's lock; a player that the process has opened
// clang-format on
//
// The pointer that it takes as a reference, or as InOut, is not null, but for a function of the first kind.
#pragma once

#include <concepts>
#include <cstdint>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/run/RemoteClient.h"

namespace DeviceSimulator {

/// Of an answer's parameters: a number that is both read and written. The record shows it as it came in.
template <typename T>
struct InOut {
    T* pointer;
    T& operator*() const { return *pointer; }
};

template <typename>
constexpr bool kIsInOut = false;
template <typename T>
constexpr bool kIsInOut<InOut<T>> = true;

template <typename T>
void AddArgument(CallRecord& record, T argument, bool isInOut) {
    constexpr std::size_t kLongestText = 4096;
    if constexpr (std::is_integral_v<T>) {
        record.arguments.push_back(argument);
    } else if constexpr (std::is_same_v<T, char*>) {
        if (argument != nullptr) {
            record.text.assign(argument, strnlen(argument, kLongestText));
        }
    } else if constexpr (std::is_same_v<T, u32*>) {
        if (isInOut) {
            record.arguments.push_back(argument != nullptr ? *argument : 0);
        }
    }
}

/// What was handed to a function; the last parameters of its answer are its own.
template <typename... Wanted, typename... Given>
CallRecord RecordArguments(u32 (*)(Wanted...), Given... given) {
    constexpr bool kInOut[] = {kIsInOut<Wanted>...};
    std::size_t index = sizeof...(Wanted) - sizeof...(Given);
    CallRecord record;
    record.thread = RemoteCall::CallingThread();
    record.arguments.reserve(sizeof...(Given));
    (AddArgument(record, given, kInOut[index++]), ...);
    return record;
}

template <typename Wanted, typename Given>
bool IsGood(Given given) {
    if constexpr (std::is_pointer_v<Given> && !std::is_pointer_v<Wanted>) {
        return given != nullptr;
    }
    return true;
}

template <typename Wanted, typename Given>
Wanted Pass(Given given) {
    if constexpr (std::is_reference_v<Wanted>) {
        return *given;
    } else {
        return Wanted{given};
    }
}

// What is answered, by what the answer works on.

template <typename... Wanted, typename... Given>
u32 Ask(u32 (*answer)(Engine&, Wanted...), Engine& engine, Given... given) {
    return answer(engine, Pass<Wanted>(given)...);
}

template <typename... Wanted, typename... Given>
u32 Ask(u32 (*answer)(ManagerModel&, TimePoint, u32, Wanted...), Engine& engine, u32 ph, Given... given) {
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) -> u32 {
        if (!model.Processes().Contains(ph)) {
            return DEV_MGR_PROCESS_NOT_REGISTERED;
        }
        return (IsGood<Wanted>(given) && ...) ? answer(model, now, ph, Pass<Wanted>(given)...)
                                              : u32{DEV_MGR_WRONG_PARAMS};
    });
}

template <typename Player, typename... Wanted, typename... Given>
requires std::same_as<std::remove_const_t<Player>, Device> u32
Ask(u32 (*answer)(Player&, TimePoint, Wanted...), Engine& engine, u32 ph, u32 dh, Given... given) {
    return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) -> u32 {
        Device* device = nullptr;
        const DevMgrResult result = model.FindPlayer(ph, dh, device);
        if (result != DEV_MGR_SUCCESS) {
            return result;
        }
        return (IsGood<Wanted>(given) && ...) ? answer(*device, now, Pass<Wanted>(given)...)
                                              : u32{DEV_MGR_WRONG_PARAMS};
    });
}

/// Notes the call's end, however it comes.
class OpenCall {
  public:
    OpenCall(CallLog& log, FunctionId function, CallRecord record)
        : m_log(log), m_number(log.Begin(function, std::move(record))) {}
    ~OpenCall() { m_log.End(m_number, m_result); }
    OpenCall(const OpenCall&) = delete;
    OpenCall& operator=(const OpenCall&) = delete;

    u32 Return(u32 result) { return m_result = result; }

  private:
    CallLog& m_log;
    const std::uint64_t m_number;
    u32 m_result = DEV_MGR_UNKNOWN_FAILURE;
};

template <FunctionId kFunction, auto kStandIn, auto kAnswer, typename... Arguments>
u32 PassGate(Arguments... arguments) noexcept {
    try {
        Engine& engine = Engine::Instance();
        engine.EnsureStarted();
        OpenCall call(engine.Calls(), kFunction, RecordArguments(kAnswer, arguments...));
        const auto instead = engine.Scripts().Apply(kFunction);
        if (instead.failure) {
            return call.Return(*instead.failure);
        }
        if (const auto& standIn = (*instead.standIns).*kStandIn) {
            return call.Return(standIn(arguments...));
        }
        return call.Return(Ask(kAnswer, engine, arguments...));
    } catch (const std::bad_alloc&) {
        return DEV_MGR_MEMORY_ERROR;
    } catch (...) {
        return DEV_MGR_UNKNOWN_FAILURE;
    }
}

/// For the lists of wire/FunctionId.h: defines a function of the interface.
#define DEVICE_SIMULATOR_FUNCTION(name, count)                                                               \
    DEVICE_MANAGER_DEFINE(                                                                                   \
        name, count,                                                                                         \
        ::DeviceSimulator::PassGate<::DeviceSimulator::FunctionId::name, &::DeviceSimulator::StandIns::name, \
                                    &::DeviceSimulator::Answers::name>)

}  // namespace DeviceSimulator
