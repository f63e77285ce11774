// The device-manager functions as numbers, to file things under.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "DeviceSimulator/wire/Functions.h"

namespace DeviceSimulator {

enum class FunctionId : std::uint8_t {
#define DEVICE_SIMULATOR_ID(function, parameters) function,
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_ID)
#undef DEVICE_SIMULATOR_ID
};

inline constexpr auto kFunctionNames = std::to_array<std::string_view>({
#define DEVICE_SIMULATOR_NAME(function, parameters) #function,
    DEVICE_MANAGER_FUNCTIONS(DEVICE_SIMULATOR_NAME)
#undef DEVICE_SIMULATOR_NAME
});

inline constexpr std::size_t kFunctionCount = kFunctionNames.size();

constexpr std::size_t IndexOf(FunctionId function) {
    return static_cast<std::size_t>(function);
}

constexpr std::string_view NameOf(FunctionId function) {
    return kFunctionNames[IndexOf(function)];
}

constexpr std::optional<FunctionId> FindFunction(std::string_view name) {
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        if (kFunctionNames[i] == name) {
            return static_cast<FunctionId>(i);
        }
    }
    return std::nullopt;
}

}  // namespace DeviceSimulator
