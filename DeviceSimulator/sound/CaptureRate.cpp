#include "DeviceSimulator/sound/CaptureRate.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace DeviceSimulator {

void SetCaptureRate(std::uint32_t rate) {
    const char* folder = std::getenv("DEVICE_SIMULATOR_AUDIO");
    if (folder == nullptr || *folder == '\0') {
        return;
    }
    const std::filesystem::path path = std::filesystem::path(folder) / "capture.rate";
    const std::filesystem::path fresh = path.string() + ".new";
    if (std::ofstream(fresh) << rate << '\n') {
        std::error_code ignored;
        std::filesystem::rename(fresh, path, ignored);
    }
}

}  // namespace DeviceSimulator
