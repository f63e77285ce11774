#include "DeviceSimulator/PictureCodec.h"

#include <png.h>

namespace DeviceSimulator {

namespace {

class PngReader {
  public:
    PngReader() { m_image.version = PNG_IMAGE_VERSION; }
    ~PngReader() { png_image_free(&m_image); }
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    bool Begin(std::span<const std::uint8_t> bytes) {
        return png_image_begin_read_from_memory(&m_image, bytes.data(), bytes.size()) != 0;
    }
    PictureSize Size() const { return {m_image.width, m_image.height}; }

    bool Read(RgbImage& image) {
        constexpr png_color kWhite{255, 255, 255};
        m_image.format = PNG_FORMAT_RGB;
        image = RgbImage(Size());
        return png_image_finish_read(&m_image, &kWhite, image.pixels.data(), 0, nullptr) != 0;
    }

  private:
    png_image m_image{};
};

}  // namespace

std::optional<RgbImage> DecodePng(std::span<const std::uint8_t> bytes) {
    PngReader reader;
    if (!reader.Begin(bytes)) {
        return std::nullopt;
    }
    const PictureSize size = reader.Size();
    RgbImage image;
    if (std::uint64_t{size.width} * size.height > kMaxPixels || !reader.Read(image)) {
        return std::nullopt;
    }
    return image;
}

}  // namespace DeviceSimulator
