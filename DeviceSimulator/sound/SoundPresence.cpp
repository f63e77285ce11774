#include "DeviceSimulator/sound/SoundPresence.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <system_error>

namespace DeviceSimulator {

namespace {

namespace fs = std::filesystem;

// The sound card looks for these: the devices' states, by what they are called there.
constexpr const char* kCaptureGone = "capture.gone";
constexpr const char* kPlaybackGone = "playback.gone";
constexpr const char* kDrift = "capture.ppm";
constexpr const char* kRefused = "playback.refuse";

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

struct State {
    const char* file;
    std::string content;  ///< nothing is no file
};

State NumberState(const char* file, std::int64_t number) {
    return {file, number == 0 ? std::string() : std::to_string(number) + '\n'};
}

/// Whole or not at all.
bool Write(const fs::path& file, const std::string& content) {
    const fs::path fresh = file.native() + ".new";
    std::error_code error;
    if (std::ofstream(fresh) << content << std::flush) {
        fs::rename(fresh, file, error);
        return !error;
    }
    return false;
}

/// What was wrong.
std::string Put(std::initializer_list<State> states) {
    const fs::path folder = SoundFolder();
    if (folder.empty()) {
        return "there is no simulated sound card: DEVICE_SIMULATOR_AUDIO is not set";
    }
    static std::mutex mutex;  // two would write one new file
    const std::lock_guard lock(mutex);
    for (const State& state : states) {
        std::error_code ignored;
        const fs::path file = folder / state.file;
        const bool isDone =
            state.content.empty() ? fs::remove(file, ignored) || !IsThere(file) : Write(file, state.content);
        if (!isDone) {
            return "nothing can be written in the sound card's folder " + folder.string();
        }
    }
    return {};
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
    return Put({{kCaptureGone, presence.hasCapture ? "" : "gone\n"},
                {kPlaybackGone, presence.hasPlayback ? "" : "gone\n"},
                NumberState(kDrift, presence.driftPpm),
                NumberState(kRefused, presence.refusedHz)});
}

std::string CauseXrun(bool isCapture) {
    return Put({{isCapture ? "capture.xrun" : "playback.xrun", "once\n"}});
}

std::string SetCaptureRate(std::uint32_t rate) {
    return Put({NumberState("capture.rate", rate)});
}

}  // namespace DeviceSimulator
