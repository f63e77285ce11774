#include "DeviceSimulator/run/Environment.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "DeviceSimulator/device/DeviceTypes.h"

namespace DeviceSimulator {

namespace {

std::string_view Variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : std::string_view{value};
}

}  // namespace

SimulatorOptions OptionsFromEnvironment() {
    SimulatorOptions options;
    const std::string_view word = Variable("DEVICE_SIMULATOR_DEVICE");
    if (word == "none") {
        return options;
    }
    DeviceDescription device;
    const auto type = FindDeviceType(word);
    if (type && (IsPlayer(*type) || IsStick(*type))) {
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
