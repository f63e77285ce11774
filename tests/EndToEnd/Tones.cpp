#include "tests/EndToEnd/Tones.h"

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "DeviceSimulator/tools/WavTone.h"
#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSoundFolder = "/tmp/sound";
constexpr double kTolerance = 0.06;

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

void WaitForTone(double hertz) {
    Require("a tone of " + std::to_string(hertz) + " Hz", [&] {
        const auto heard = DeviceSimulator::NewestTone(kSoundFolder + std::string("/playback.wav"));
        return heard && std::abs(*heard - hertz) <= hertz * kTolerance;
    });
}

std::vector<pid_t> SoundPrograms() {
    std::vector<pid_t> found;
    for (const fs::directory_entry& process : fs::directory_iterator("/proc")) {
        const std::string words = ReadFile(process.path() / "cmdline");
        const bool isZombie =
            words.empty() && ReadFile(process.path() / "comm").starts_with("simulated-playe");
        if (isZombie || words.find(std::string("simulated-player-media\0sound", 28)) != std::string::npos)
            found.push_back(std::stoi(process.path().filename()));
    }
    return found;
}

}  // namespace EndToEnd
