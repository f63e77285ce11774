#include <charconv>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string_view>

#include "DeviceSimulator/Library.h"

namespace DeviceSimulator {

namespace {

// A million tracks are ten times what any player holds, and still fit the memory of a small machine.
constexpr std::size_t kMaxSyntheticTracks = 1000000;

std::optional<std::size_t> TrackNumber(std::string_view text) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number > kMaxSyntheticTracks) {
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

}  // namespace

std::unique_ptr<Library> MakeLibraryFromEnvironment(const LibraryProgress& progress) {
    const char* const folder = std::getenv("DEVICE_SIMULATOR_LIBRARY");
    if (folder != nullptr && *folder != '\0') {
        return ScanMusicFolder(folder, CacheFolder(), progress);
    }
    const char* const tracks = std::getenv("DEVICE_SIMULATOR_TRACKS");
    if (tracks != nullptr && *tracks != '\0') {
        if (const auto number = TrackNumber(tracks)) {
            return MakeSyntheticLibrary(*number);
        }
        std::cerr << "device simulator: DEVICE_SIMULATOR_TRACKS is '" << tracks
                  << "', not a number from 0 to " << kMaxSyntheticTracks
                  << "; the built-in library is used\n";
    }
    return MakeBuiltInLibrary();
}

}  // namespace DeviceSimulator
