// What the environment asks of the simulated player.
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "DeviceSimulator/device/DeviceTypes.h"
#include "DeviceSimulator/music/Library.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

namespace {

/// Empty when it is not set.
std::string_view Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : std::string_view();
}

void Complain(const char* variable, std::string_view value, const std::string& rest) {
    std::fprintf(stderr, "device simulator: %s is '%s'%s\n", variable, std::string(value).c_str(),
                 rest.c_str());
}

std::optional<std::uint32_t> TrackNumber(std::string_view text) {
    std::uint32_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number > kMostSyntheticTracks) {
        return std::nullopt;
    }
    return number;
}

/// Empty: none is wanted, or there is no place for one.
std::filesystem::path CacheFolder() {
    if (const char* const folder = std::getenv("DEVICE_SIMULATOR_CACHE")) {
        return folder;
    }
    constexpr const char* kName = "device-simulator";
    // Where a relative path would lead is nobody's intention.
    if (const auto base = Variable("XDG_CACHE_HOME"); base.starts_with('/')) {
        return std::filesystem::path(base) / kName;
    }
    const auto home = Variable("HOME");
    return home.starts_with('/') ? std::filesystem::path(home) / ".cache" / kName : std::filesystem::path();
}

/// What of the choice is left to the environment.
MusicChoice Complete(MusicChoice choice) {
    if (!choice.folder.empty() || choice.tracks) {
        return choice;
    }
    choice.folder = Variable("DEVICE_SIMULATOR_LIBRARY");
    const auto tracks = Variable("DEVICE_SIMULATOR_TRACKS");
    if (choice.folder.empty() && !tracks.empty()) {
        choice.tracks = TrackNumber(tracks);
        if (!choice.tracks) {
            Complain("DEVICE_SIMULATOR_TRACKS", tracks,
                     ", not a number from 0 to " + std::to_string(kMostSyntheticTracks) +
                         "; the built-in library is used");
        }
    }
    return choice;
}

}  // namespace

SimulatorOptions OptionsFromEnvironment() {
    SimulatorOptions options;
    const auto word = Variable("DEVICE_SIMULATOR_DEVICE");
    if (word == "none") {
        return options;
    }
    DeviceDescription device;
    const auto type = FindDeviceType(word);
    if (type && (IsPlayer(*type) || IsStick(*type))) {
        device.type = *type;
    } else if (!word.empty()) {
        Complain("DEVICE_SIMULATOR_DEVICE", word.substr(0, 64), "; it takes iap2, iap, stick or none");
    }
    options.devices.push_back(device);
    return options;
}

std::unique_ptr<Library> MakeChosenLibrary(const MusicChoice& choice, const LibraryProgress& progress) {
    const MusicChoice whole = Complete(choice);
    if (!whole.folder.empty()) {
        return ScanMusicFolder(whole.folder, CacheFolder(),
                               ScanOptions{.progress = progress, .sorting = whole.sorting});
    }
    return whole.tracks ? MakeSyntheticLibrary(*whole.tracks, whole.sorting)
                        : MakeBuiltInLibrary(whole.sorting);
}

}  // namespace DeviceSimulator
