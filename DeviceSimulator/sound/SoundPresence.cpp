#include "DeviceSimulator/sound/SoundPresence.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace DeviceSimulator {

namespace {

namespace fs = std::filesystem;

// The sound card looks for these: the devices' states, by what they are called there.
constexpr const char* kCaptureGone = "capture.gone";
constexpr const char* kPlaybackGone = "playback.gone";
constexpr const char* kDrift = "capture.ppm";
constexpr const char* kRefused = "playback.refuse";

constexpr const char* kNoCard = "there is no simulated sound card: DEVICE_SIMULATOR_AUDIO is not set";

/// Empty when there is no simulated sound card.
fs::path SoundFolder() {
    const char* const folder = std::getenv("DEVICE_SIMULATOR_AUDIO");
    return folder != nullptr ? folder : "";
}

bool IsThere(const fs::path& file) {
    std::error_code ignored;
    return fs::exists(file, ignored);
}

/// 0 for what is none.
template <typename Number>
Number NumberIn(const fs::path& file) {
    Number number = 0;
    std::ifstream(file) >> number;
    return number;
}

/// Nothing is no file.
bool Put(const fs::path& file, const std::string& content) {
    if (content.empty()) {
        std::error_code ignored;
        fs::remove(file, ignored);
        return !IsThere(file);
    }
    return static_cast<bool>(std::ofstream(file) << content << std::flush);
}

std::string TextOf(std::int64_t number) {
    return number == 0 ? std::string() : std::to_string(number) + '\n';
}

std::string Complaint(bool isDone, const fs::path& folder) {
    return isDone ? std::string() : "nothing can be written in the sound card's folder " + folder.string();
}

}  // namespace

std::optional<SoundPresence> ReadSoundPresence() {
    const fs::path folder = SoundFolder();
    if (folder.empty()) {
        return std::nullopt;
    }
    return SoundPresence{!IsThere(folder / kCaptureGone), !IsThere(folder / kPlaybackGone),
                         NumberIn<std::int32_t>(folder / kDrift), NumberIn<std::uint32_t>(folder / kRefused)};
}

std::string SetSoundPresence(const SoundPresence& presence) {
    const fs::path folder = SoundFolder();
    if (folder.empty()) {
        return kNoCard;
    }
    const bool isDone = Put(folder / kCaptureGone, presence.hasCapture ? "" : "gone\n") &&
                        Put(folder / kPlaybackGone, presence.hasPlayback ? "" : "gone\n") &&
                        Put(folder / kDrift, TextOf(presence.driftPpm)) &&
                        Put(folder / kRefused, TextOf(presence.refusedHz));
    return Complaint(isDone, folder);
}

std::string CauseXrun(bool isCapture) {
    const fs::path folder = SoundFolder();
    if (folder.empty()) {
        return kNoCard;
    }
    return Complaint(Put(folder / (isCapture ? "capture.xrun" : "playback.xrun"), "once\n"), folder);
}

}  // namespace DeviceSimulator
