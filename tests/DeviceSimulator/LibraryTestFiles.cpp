#include "tests/DeviceSimulator/LibraryTestFiles.h"

#include <gtest/gtest.h>
#include <png.h>
#include <zlib.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "DeviceSimulator/CoverDrawing.h"

namespace DeviceSimulator {

namespace fs = std::filesystem;

ScratchFolder::ScratchFolder() {
    std::string name = testing::TempDir() + "library-test-XXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
        std::abort();
    }
    m_path = name;
}

ScratchFolder::~ScratchFolder() {
    std::error_code error;
    fs::remove_all(m_path, error);
}

fs::path ScratchFolder::Write(const fs::path& name, std::string_view bytes) const {
    fs::path path = m_path / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
    return path;
}

fs::path ScratchFolder::WriteMp3(const fs::path& name, const TrackTags& tags,
                                 std::span<const DemoPicture> pictures, std::uint32_t milliseconds) const {
    // MPEG-1 layer III, 128 kbit/s: 1152 samples in 417 bytes, of which zeros are silence.
    std::string frame(417, '\0');
    frame.replace(0, 4, "\xFF\xFB\x90\x64");
    std::string frames;
    for (std::uint32_t i = 0; i < milliseconds * 441 / 11520; ++i) {
        frames += frame;
    }
    fs::path path = Write(name, frames);
    EXPECT_TRUE(WriteTags(path, tags, pictures)) << path;
    return path;
}

TrackTags Tags(std::string title, std::string artist, std::string album, std::uint32_t disc,
               std::uint32_t track) {
    TrackTags tags;
    tags.title = std::move(title);
    tags.artist = std::move(artist);
    tags.album = std::move(album);
    tags.disc = disc;
    tags.track = track;
    return tags;
}

Names NamesOf(const Library& library, const std::vector<PathStep>& path, std::uint32_t category) {
    Names names;
    for (const std::uint32_t entry : *library.Items(path, category)) {
        names.emplace_back(library.ItemName(category, entry));
    }
    return names;
}

std::vector<std::uint8_t> MakeJpeg(PictureSize size) {
    return EncodeJpeg(DrawCoverImage(size, "name", "artist")).value().bytes;
}

std::vector<std::uint8_t> MakePng(PictureSize size) {
    const RgbImage image = DrawCoverImage(size, "name", "artist");
    png_image head{};
    head.version = PNG_IMAGE_VERSION;
    head.width = size.width;
    head.height = size.height;
    head.format = PNG_FORMAT_RGB;
    png_alloc_size_t length = PNG_IMAGE_PNG_SIZE_MAX(head);
    std::vector<std::uint8_t> bytes(length);
    EXPECT_NE(png_image_write_to_memory(&head, bytes.data(), &length, 0, image.pixels.data(), 0, nullptr), 0);
    bytes.resize(length);
    return bytes;
}

std::vector<std::uint8_t> MakePngClaiming(PictureSize size) {
    std::vector<std::uint8_t> bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n',
                                    0,    0,   0,   13,  'I',  'H',  'D',  'R'};
    const auto append = [&bytes](std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8) {
            bytes.push_back(static_cast<std::uint8_t>(value >> shift));
        }
    };
    append(size.width);
    append(size.height);
    bytes.insert(bytes.end(), {8, 2, 0, 0, 0});
    append(static_cast<std::uint32_t>(crc32(0, bytes.data() + 12, static_cast<uInt>(bytes.size() - 12))));
    // The reader stops at the head of the picture's data.
    bytes.insert(bytes.end(), {0, 0, 0, 10, 'I', 'D', 'A', 'T', 0x78, 0x9C, 0x63, 0, 0, 0, 2, 0, 1, 0});
    return bytes;
}

}  // namespace DeviceSimulator
