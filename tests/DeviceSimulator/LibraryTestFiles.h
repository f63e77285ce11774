// What the tests of the library share: music files, pictures, lists as names.
#pragma once

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "DeviceSimulator/music/CoverDrawing.h"
#include "DeviceSimulator/music/LibraryBuilder.h"
#include "DeviceSimulator/tools/DemoMusicTags.h"
#include "ScratchFolder.h"

namespace DeviceSimulator {

using Bytes = std::vector<std::uint8_t>;
using Names = std::vector<std::string>;

/// A silent mp3 file of 100 ms, at 44,100 Hz.
inline void WriteMp3(const ScratchFolder& folder, const std::filesystem::path& name, const TrackTags& tags,
                     const std::vector<DemoPicture>& pictures = {}) {
    // MPEG-1 layer III, 128 kbit/s: 1152 samples in 417 bytes, of which zeros are silence.
    std::string frame(417, '\0');
    frame.replace(0, 4, "\xFF\xFB\x90\x64");
    EXPECT_TRUE(WriteTags(folder.Write(name, frame + frame + frame + frame), tags, pictures)) << name;
}

/// Reads the size that a JPEG says it has.
inline ImageSize SizeOf(const Bytes& jpeg) {
    const auto cost = ReadJpegCost(jpeg);
    return cost ? ImageSize{cost->width, cost->height} : ImageSize();
}

inline TrackTags Tags(std::string title, std::string artist, std::string album, std::uint32_t disc = 0,
                      std::uint32_t track = 0) {
    TrackTags tags;
    tags.title = std::move(title);
    tags.artist = std::move(artist);
    tags.album = std::move(album);
    tags.disc = disc;
    tags.track = track;
    return tags;
}

/// The names of a list's items, in its order.
inline Names NamesOf(const Library& library, const std::vector<PathStep>& path, std::uint32_t category) {
    Names names;
    for (const std::uint32_t entry : *library.Items(path, category)) {
        names.emplace_back(library.ItemName(category, entry));
    }
    return names;
}

inline Bytes MakeJpeg(ImageSize size) {
    return EncodeJpeg(DrawCoverImage(size, "name", "artist"), 75).value();
}

inline Bytes MakePng(ImageSize size) {
    return EncodePng(DrawCoverImage(size, "name", "artist"));
}

/// A PNG with a sound head that claims `size`, and next to nothing behind it.
inline Bytes MakePngClaiming(ImageSize size) {
    Bytes bytes = MakePng({1, 1});
    const auto put = [&bytes](std::size_t at, std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes[at++] = static_cast<std::uint8_t>(value >> shift);
        }
    };
    put(16, size.width);
    put(20, size.height);
    put(29, static_cast<std::uint32_t>(crc32(0, bytes.data() + 12, 17)));
    return bytes;
}

}  // namespace DeviceSimulator
