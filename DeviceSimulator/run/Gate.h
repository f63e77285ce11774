// The one way through which every C function goes: it keeps the record of the call, does what scripts and
// stand-ins ask for, and lets no exception out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <type_traits>
#include <utility>

#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

/// An argument that is both read and written; the record shows it as it came in.
template <typename T>
struct InOut {
    T* pointer;
};

inline void AddNumber(CallArguments& arguments, std::int64_t number) {
    if (arguments.count < CallArguments::kMost) {
        arguments.numbers[arguments.count++] = number;
    }
}

inline void AddText(CallArguments& arguments, const char* text) {
    constexpr std::size_t kLongestText = 4096;
    if (text != nullptr) {
        arguments.text.assign(text, strnlen(text, kLongestText));
    }
}

template <typename T>
void AddArgument(CallArguments& arguments, const T& argument) {
    if constexpr (std::is_integral_v<T>) {
        AddNumber(arguments, argument);
    } else if constexpr (std::is_same_v<T, char*>) {
        AddText(arguments, argument);
    }
}

template <typename T>
void AddArgument(CallArguments& arguments, const InOut<T>& argument) {
    AddNumber(arguments, argument.pointer != nullptr ? *argument.pointer : 0);
}

template <typename T>
T Unwrap(T argument) {
    return argument;
}

template <typename T>
T* Unwrap(InOut<T> argument) {
    return argument.pointer;
}

/// Notes the call's end, however it comes.
class OpenCall {
  public:
    OpenCall(CallLog& log, FunctionId function, CallArguments arguments)
        : m_log(log), m_number(log.Begin(function, std::move(arguments))) {}
    ~OpenCall() { m_log.End(m_number, m_result); }
    OpenCall(const OpenCall&) = delete;
    OpenCall& operator=(const OpenCall&) = delete;

    std::uint32_t Return(std::uint32_t result) { return m_result = result; }

  private:
    CallLog& m_log;
    const std::uint64_t m_number;
    std::uint32_t m_result = DEV_MGR_UNKNOWN_FAILURE;
};

template <typename Function>
struct GateKey {
    FunctionId id;
    std::function<Function> StandIns::*standIn;
};

/// What call and script have in common: `work`(engine) is the model's own answer.
template <typename Function, typename Work, typename... Arguments>
std::uint32_t PassGate(GateKey<Function> key, Work work, Arguments... arguments) noexcept {
    try {
        Engine& engine = Engine::Instance();
        engine.EnsureStarted();
        CallArguments recorded;
        (AddArgument(recorded, arguments), ...);
        OpenCall call(engine.Calls(), key.id, std::move(recorded));
        engine.Scripts().ApplyDelay(key.id);
        if (const auto code = engine.Scripts().NextFailure(key.id)) {
            return call.Return(*code);
        }
        const auto standIns = engine.CurrentStandIns();
        if (const auto& standIn = (*standIns).*key.standIn) {
            return call.Return(standIn(Unwrap(arguments)...));
        }
        return call.Return(work(engine));
    } catch (const std::bad_alloc&) {
        return DEV_MGR_MEMORY_ERROR;
    } catch (...) {
        return DEV_MGR_UNKNOWN_FAILURE;
    }
}

/// As PassGate, for what works on a player that the process has opened: `work`(device, now) runs under the
/// model's lock.
template <typename Function, typename Work, typename... Arguments>
std::uint32_t PassPlayerGate(GateKey<Function> key, Work work, std::uint32_t process, std::uint32_t handle,
                             Arguments... arguments) noexcept {
    return PassGate(
        key,
        [&](Engine& engine) {
            return engine.Loop().Locked([&](ManagerModel& model, TimePoint now) {
                Device* device = nullptr;
                const DevMgrResult result = model.FindPlayer(process, handle, device);
                return result == DEV_MGR_SUCCESS ? work(*device, now) : result;
            });
        },
        process, handle, arguments...);
}

#define DEVICE_SIMULATOR_KEY(function)                                                         \
    (::DeviceSimulator::GateKey<decltype(::function)>{::DeviceSimulator::FunctionId::function, \
                                                      &::DeviceSimulator::StandIns::function})

}  // namespace DeviceSimulator
