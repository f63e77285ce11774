#include "DeviceSimulator/SoundPresence.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "DeviceSimulator/Environment.h"

namespace DeviceSimulator {

namespace {

namespace fs = std::filesystem;

// While such a file exists the sound card says that the device is unplugged.
constexpr const char* kCaptureGone = "capture.gone";
constexpr const char* kPlaybackGone = "playback.gone";

bool IsThere(const fs::path& marker) {
    std::error_code ignored;
    return !fs::exists(marker, ignored);
}

bool SetThere(const fs::path& marker, bool isThere) {
    if (isThere) {
        std::error_code ignored;
        fs::remove(marker, ignored);
    } else {
        const std::ofstream created(marker);
    }
    return IsThere(marker) == isThere;
}

}  // namespace

std::optional<SoundPresence> ReadSoundPresence() {
    const fs::path folder = SoundFolderFromEnvironment();
    if (folder.empty()) {
        return std::nullopt;
    }
    return SoundPresence{IsThere(folder / kCaptureGone), IsThere(folder / kPlaybackGone)};
}

std::string SetSoundPresence(const SoundPresence& presence) {
    const fs::path folder = SoundFolderFromEnvironment();
    if (folder.empty()) {
        return "there is no simulated sound card: DEVICE_SIMULATOR_AUDIO is not set";
    }
    const bool isDone = SetThere(folder / kCaptureGone, presence.hasCapture) &&
                        SetThere(folder / kPlaybackGone, presence.hasPlayback);
    return isDone ? std::string{} : "nothing can be written in the sound card's folder " + folder.string();
}

}  // namespace DeviceSimulator
