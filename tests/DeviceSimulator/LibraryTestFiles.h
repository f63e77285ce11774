// What the tests of the library share: scratch folders, music files, pictures, lists as names.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceSimulator/LibraryBuilder.h"
#include "DeviceSimulator/PictureCodec.h"
#include "DeviceSimulator/tools/DemoMusicTags.h"

namespace DeviceSimulator {

class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    /// Writes a file below the folder, with the folders above it.
    std::filesystem::path Write(const std::filesystem::path& name, std::string_view bytes) const;
    /// A silent mp3 file of about `milliseconds`, at 44,100 Hz.
    std::filesystem::path WriteMp3(const std::filesystem::path& name, const TrackTags& tags,
                                   std::span<const DemoPicture> pictures = {},
                                   std::uint32_t milliseconds = 1000) const;

  private:
    std::filesystem::path m_path;
};

TrackTags Tags(std::string title, std::string artist, std::string album, std::uint32_t disc = 0,
               std::uint32_t track = 0);

using Names = std::vector<std::string>;

/// The names of a list's items, in its order.
Names NamesOf(const Library& library, const std::vector<PathStep>& path, std::uint32_t category);

std::vector<std::uint8_t> MakeJpeg(PictureSize size);
std::vector<std::uint8_t> MakePng(PictureSize size);
/// A PNG with a sound head that claims `size`, and nothing behind it.
std::vector<std::uint8_t> MakePngClaiming(PictureSize size);

}  // namespace DeviceSimulator
