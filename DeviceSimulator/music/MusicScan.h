// How a folder of music is scanned.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>

#include "DeviceSimulator/music/Library.h"

namespace DeviceSimulator {

struct ScanOptions {
    LibraryProgress progress;
    std::chrono::milliseconds patience{10000};  ///< with a file
    Sorting sorting = Sorting::WithoutArticle;
};

/// As ScanMusicFolder of Library.h.
std::unique_ptr<Library> ScanMusicFolder(const std::filesystem::path& folder,
                                         const std::filesystem::path& cache, const ScanOptions& options);

}  // namespace DeviceSimulator
