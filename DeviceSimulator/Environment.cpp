#include "DeviceSimulator/Environment.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "DeviceSimulator/Values.h"

namespace DeviceSimulator {

namespace {

struct TypeWord {
    std::string_view word;
    std::uint32_t type;
};

constexpr auto kTypeWords = std::to_array<TypeWord>({{"iap2", kIap2},
                                                     {"iap", kIap},
                                                     {"stick", kStickFat32},
                                                     {"mtp", kMtp},
                                                     {"unknown", kUnknownDevice},
                                                     {"hub", kHub},
                                                     {"no-medium", kNoMedium},
                                                     {"unsupported", kUnsupportedDevice}});

std::string_view Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

}  // namespace

std::optional<std::uint32_t> FindDeviceType(std::string_view word) {
    const auto* found = std::find_if(kTypeWords.begin(), kTypeWords.end(),
                                     [&](const TypeWord& entry) { return entry.word == word; });
    return found == kTypeWords.end() ? std::nullopt : std::optional(found->type);
}

std::string_view DeviceTypeWord(std::uint32_t type) {
    // A kind's word stands for its most usual type.
    std::uint32_t usual = type;
    if (IsStick(type)) {
        usual = kStickFat32;
    } else if (IsPlayer(type)) {
        usual = IsIap2(type) ? kIap2 : kIap;
    } else if (IsListed(type)) {
        usual = kMtp;
    }
    const auto* found = std::find_if(kTypeWords.begin(), kTypeWords.end(),
                                     [&](const TypeWord& entry) { return entry.type == usual; });
    return found == kTypeWords.end() ? std::string_view{} : found->word;
}

std::string SoundFolderFromEnvironment() {
    return std::string(Variable("DEVICE_SIMULATOR_AUDIO"));
}

SimulatorOptions OptionsFromEnvironment() {
    SimulatorOptions options;
    const std::string_view word = Variable("DEVICE_SIMULATOR_DEVICE");
    if (word == "none") {
        return options;
    }
    DeviceDescription device;
    if (const auto type = FindDeviceType(word)) {
        device.type = *type;
    } else if (!word.empty()) {
        std::fprintf(
            stderr,
            "device simulator: DEVICE_SIMULATOR_DEVICE is '%.*s'; it takes iap2, iap, stick or none\n",
            static_cast<int>(std::min<std::size_t>(word.size(), 64)), word.data());
    }
    options.devices.push_back(device);
    return options;
}

std::optional<std::string> ControlPathFromEnvironment() {
    const std::string_view path = Variable("DEVICE_SIMULATOR_CONTROL");
    return path.empty() ? std::nullopt : std::optional<std::string>(path);
}

}  // namespace DeviceSimulator
