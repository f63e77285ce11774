// A small set of music files for demonstrations and tests.
#pragma once

#include <filesystem>

#include "DeviceSimulator/tools/DemoMusicEncoder.h"

namespace DeviceSimulator {

/// Writes seven albums (23 tracks of 5 to 20 seconds in five formats, with tags and pictures) and a playlist
/// below `folder`, which is made where it is missing. The same sound and tags at every call.
DemoError MakeDemoMusic(const std::filesystem::path& folder);

}  // namespace DeviceSimulator
