#include "tests/EndToEnd/Tones.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <vector>

namespace EndToEnd {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSoundFolder = "/tmp/sound";
constexpr const char* kOutput = "/tmp/sound/playback.wav";
constexpr std::streamoff kHeaderBytes = 44;
constexpr std::streamoff kRateAt = 24;
constexpr std::streamoff kFrameBytes = 4;
constexpr int kSilence = 300;  // of 32767
constexpr double kTolerance = 0.06;

/// By its zero crossings, as a sound that changes meanwhile is no tone.
double FindTone(const std::vector<std::int16_t>& stereo, std::uint32_t rate) {
    int crossings = 0;
    int peak = 0;
    for (std::size_t i = 2; i < stereo.size(); i += 2) {
        crossings += (stereo[i - 2] < 0) != (stereo[i] < 0) ? 1 : 0;
        peak = std::max(peak, std::abs(stereo[i]));
    }
    return peak < kSilence ? 0 : crossings * (rate * 1.0) / static_cast<double>(stereo.size());
}

/// None where the output has not played as much yet, or starts over.
std::optional<double> NewestTone() {
    std::ifstream file(kOutput, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    std::uint32_t rate = 0;
    file.seekg(kRateAt).read(reinterpret_cast<char*>(&rate), sizeof rate);
    const std::streamoff frames = rate / 25;
    const std::streamoff first = (size - kHeaderBytes) / kFrameBytes - frames;
    if (!file || first < 0)
        return std::nullopt;
    std::vector<std::int16_t> stereo(static_cast<std::size_t>(frames) * 2);
    file.seekg(kHeaderBytes + first * kFrameBytes);
    file.read(reinterpret_cast<char*>(stereo.data()), frames * kFrameBytes);
    return file ? std::optional(FindTone(stereo, rate)) : std::nullopt;
}

}  // namespace

void SetUpSound() {
    for (const char* folder : {kMusicFolder, kSoundFolder}) {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    setenv("DEVICE_SIMULATOR_LIBRARY", kMusicFolder, 1);
    setenv("DEVICE_SIMULATOR_AUDIO", kSoundFolder, 1);
    setenv("ALSA_CONFIG_PATH", END_TO_END_ALSA_CONFIG, 1);
}

void MakeToneFile(const std::string& name, int rate, int firstHertz, int secondHertz) {
    std::string command = MAKE_TONE_FILE;
    command += ' ' + (kMusicFolder + name);
    for (const int argument : {rate, firstHertz, secondHertz})
        command += ' ' + std::to_string(argument);
    if (std::system(command.c_str()) != 0)
        throw std::runtime_error("failed: " + command);
}

milliseconds WaitForTone(double hertz) {
    const Clock::time_point begin = Clock::now();
    Require("a tone of " + std::to_string(hertz) + " Hz", [&] {
        const std::optional<double> heard = NewestTone();
        return heard && std::abs(*heard - hertz) <= hertz * kTolerance;
    });
    return std::chrono::duration_cast<milliseconds>(Clock::now() - begin);
}

}  // namespace EndToEnd
