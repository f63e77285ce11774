// Tags and pictures into music files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "ServiceUtil/JpegImage.h"

namespace DeviceSimulator {

struct DemoPicture {
    std::vector<std::uint8_t> bytes;  ///< a JPEG or PNG
    bool isFront = true;
};

/// None where it cannot be encoded.
std::vector<std::uint8_t> EncodePng(const RgbImage& image);

/// Writes what of `tags` is not empty, and the pictures, into an mp3, flac, ogg, opus or m4a file. False
/// when the file cannot be written.
bool WriteTags(const std::filesystem::path& path, const TrackTags& tags,
               std::span<const DemoPicture> pictures);

}  // namespace DeviceSimulator
