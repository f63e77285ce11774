// Reads music files through the media program: as many of it side by side as there are processors.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"

namespace DeviceSimulator {

/// Of one file; its texts are as the program has sent them.
struct ReadMusic {
    ScannedFile file;
    /// Why it will never be read: it took the program down, or the time that it may take, twice.
    std::string failure;
};

struct MusicReading {
    /// What a file may take until it is given up.
    std::chrono::milliseconds patience{10000};
    /// Takes what came of the file of that number, in ascending order.
    std::function<void(std::size_t, ReadMusic)> take;
    /// Is called every 100 ms at least. What it throws ends the reading.
    std::function<void()> tick;
};

/// Reads `paths`, numbered from 0; on the caller's thread, which the functions are called on. Empty, or why
/// the media program cannot be run: what has not been taken by then never is.
std::string ReadMusicFiles(const std::vector<std::string>& paths, const MusicReading& reading);

}  // namespace DeviceSimulator
