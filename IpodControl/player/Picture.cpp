#include "IpodControl/player/Picture.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <utility>
// libjpeg's header needs stdio's types declared before it.
#include <jpeglib.h>

namespace IpodControl::PlayerView {

namespace {

/// The service sends some hundred pixels a side; a terminal shows fewer.
constexpr JDIMENSION kLargestSide = 2048;
constexpr JDIMENSION kWantedSide = 128;
constexpr std::size_t kMostBytes = 4U << 20;
/// A progressive picture may come in any number of passes over all of it; real ones have about ten.
constexpr int kMostScans = 100;

/// libjpeg leaves by longjmp: whatever has a destructor is a member, not a variable of the function that sets
/// the jump.
class Decoder {
  public:
    Decoder() {
        m_info.err = jpeg_std_error(&m_errors.manager);
        m_errors.manager.error_exit = Escape;
        m_errors.manager.emit_message = [](j_common_ptr, int) {};
        m_progress.progress_monitor = [](j_common_ptr info) {
            if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMostScans) {
                Escape(info);
            }
        };
    }
    ~Decoder() { jpeg_destroy_decompress(&m_info); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    bool Run(std::string_view jpeg) {
        if (setjmp(m_errors.escape) != 0) {
            return false;
        }
        jpeg_create_decompress(&m_info);
        m_info.progress = &m_progress;
        jpeg_mem_src(&m_info, reinterpret_cast<const unsigned char*>(jpeg.data()),
                     static_cast<unsigned long>(jpeg.size()));
        if (jpeg_read_header(&m_info, TRUE) != JPEG_HEADER_OK || !Begin()) {
            return false;
        }
        while (m_info.output_scanline < m_info.output_height) {
            JSAMPROW row = m_row.data();
            if (jpeg_read_scanlines(&m_info, &row, 1) != 1) {
                return false;
            }
            Store();
        }
        return true;
    }

    Picture Take() { return std::move(m_picture); }

  private:
    struct Errors {
        jpeg_error_mgr manager{};
        std::jmp_buf escape{};
    };

    [[noreturn]] static void Escape(j_common_ptr info) {
        std::longjmp(reinterpret_cast<Errors*>(info->err)->escape, 1);
    }

    bool Begin() {
        if (std::max(m_info.image_width, m_info.image_height) > kLargestSide) {
            return false;
        }
        m_info.out_color_space = m_info.num_components == 4 ? JCS_CMYK : JCS_RGB;
        m_info.scale_num = 1;
        m_info.scale_denom = 1;
        while (m_info.scale_denom < 8 &&
               std::min(m_info.image_width, m_info.image_height) / (2 * m_info.scale_denom) >= kWantedSide) {
            m_info.scale_denom *= 2;
        }
        jpeg_start_decompress(&m_info);
        m_picture = {m_info.output_width, m_info.output_height, {}};
        m_picture.pixels.reserve(m_picture.width * m_picture.height);
        m_row.resize(m_picture.width * static_cast<std::size_t>(m_info.output_components));
        return true;
    }

    void Store() {
        const auto step = static_cast<std::size_t>(m_info.output_components);
        for (std::size_t i = 0; i + step <= m_row.size(); i += step) {
            // Four components are stored inverted by what writes them.
            const int key = step == 4 ? m_row[i + 3] : 255;
            const auto channel = [&](std::size_t c) {
                return static_cast<std::uint8_t>(m_row[i + c] * key / 255);
            };
            m_picture.pixels.push_back({channel(0), channel(1), channel(2)});
        }
    }

    Errors m_errors;
    jpeg_progress_mgr m_progress{};
    jpeg_decompress_struct m_info{};
    Picture m_picture;
    std::vector<JSAMPLE> m_row;
};

/// Of the pixels [first, last) in both directions.
Rgb Mean(const Picture& picture, std::size_t left, std::size_t right, std::size_t top, std::size_t bottom) {
    std::array<std::size_t, 3> sums{};
    for (std::size_t y = top; y < bottom; ++y) {
        for (std::size_t x = left; x < right; ++x) {
            for (std::size_t c = 0; c < sums.size(); ++c) {
                sums[c] += picture.pixels[y * picture.width + x][c];
            }
        }
    }
    const std::size_t count = (right - left) * (bottom - top);
    return {static_cast<std::uint8_t>(sums[0] / count), static_cast<std::uint8_t>(sums[1] / count),
            static_cast<std::uint8_t>(sums[2] / count)};
}

}  // namespace

std::optional<Picture> DecodeJpeg(std::string_view jpeg) {
    Decoder decoder;
    if (jpeg.empty() || jpeg.size() > kMostBytes || !decoder.Run(jpeg)) {
        return std::nullopt;
    }
    return decoder.Take();
}

Picture Scale(const Picture& picture, std::size_t width, std::size_t height) {
    Picture scaled{width, height, {}};
    if (picture.pixels.empty() || width == 0 || height == 0) {
        return {};
    }
    const auto edge = [](std::size_t i, std::size_t from, std::size_t to) { return i * from / to; };
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t top = edge(y, picture.height, height);
        const std::size_t bottom = std::max(edge(y + 1, picture.height, height), top + 1);
        for (std::size_t x = 0; x < width; ++x) {
            const std::size_t left = edge(x, picture.width, width);
            const std::size_t right = std::max(edge(x + 1, picture.width, width), left + 1);
            scaled.pixels.push_back(Mean(picture, left, right, top, bottom));
        }
    }
    return scaled;
}

}  // namespace IpodControl::PlayerView
