#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string_view>

#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

namespace {

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
    if (const char* const base = std::getenv("XDG_CACHE_HOME"); base != nullptr && *base == '/') {
        return std::filesystem::path(base) / kName;
    }
    const char* const home = std::getenv("HOME");
    return home != nullptr && *home == '/' ? std::filesystem::path(home) / ".cache" / kName
                                           : std::filesystem::path();
}

/// What of the choice is left to the environment.
MusicChoice Complete(MusicChoice choice) {
    if (!choice.folder.empty() || choice.tracks) {
        return choice;
    }
    const char* const folder = std::getenv("DEVICE_SIMULATOR_LIBRARY");
    const char* const tracks = std::getenv("DEVICE_SIMULATOR_TRACKS");
    if (folder != nullptr && *folder != '\0') {
        choice.folder = folder;
    } else if (tracks != nullptr && *tracks != '\0') {
        choice.tracks = TrackNumber(tracks);
        if (!choice.tracks) {
            std::cerr << "device simulator: DEVICE_SIMULATOR_TRACKS is '" << tracks
                      << "', not a number from 0 to " << kMostSyntheticTracks
                      << "; the built-in library is used\n";
        }
    }
    return choice;
}

}  // namespace

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
