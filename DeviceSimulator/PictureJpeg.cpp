#include "DeviceSimulator/PictureCodec.h"

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <utility>
// libjpeg's header needs stdio's types declared before it.
#include <jpeglib.h>

namespace DeviceSimulator {

namespace {

// A progressive picture may come in any number of passes over all of it; real ones have about ten.
constexpr int kMaxScans = 100;

// Such a picture is held whole while it is decoded: one of 30 million pixels, its colours halved, takes this
// much.
constexpr long kMaxDecoderBytes = 96L << 20;

// libjpeg leaves by longjmp. So every function that calls setjmp keeps whatever has a destructor in the
// object that it is a member of, and its own variables are plain and not read after the jump.
struct JpegErrors {
    jpeg_error_mgr manager{};
    std::jmp_buf escape{};

    JpegErrors() {
        jpeg_std_error(&manager);
        manager.error_exit = [](j_common_ptr info) { std::longjmp(Of(info).escape, 1); };
        manager.emit_message = [](j_common_ptr, int) {};
        manager.output_message = [](j_common_ptr) {};
    }
    static JpegErrors& Of(j_common_ptr info) { return *reinterpret_cast<JpegErrors*>(info->err); }
};

class JpegDecoder {
  public:
    JpegDecoder() {
        m_info.err = &m_errors.manager;
        m_progress.progress_monitor = [](j_common_ptr info) {
            if (reinterpret_cast<j_decompress_ptr>(info)->input_scan_number > kMaxScans) {
                std::longjmp(JpegErrors::Of(info).escape, 1);
            }
        };
    }
    ~JpegDecoder() { jpeg_destroy_decompress(&m_info); }
    JpegDecoder(const JpegDecoder&) = delete;
    JpegDecoder& operator=(const JpegDecoder&) = delete;

    bool ReadHeader(std::span<const std::uint8_t> bytes) {
        if (setjmp(m_errors.escape) != 0) {
            return false;
        }
        jpeg_create_decompress(&m_info);
        m_info.progress = &m_progress;
        m_info.mem->max_memory_to_use = kMaxDecoderBytes;
        jpeg_mem_src(&m_info, bytes.data(), static_cast<unsigned long>(bytes.size()));
        return jpeg_read_header(&m_info, TRUE) == JPEG_HEADER_OK;
    }

    PictureSize Size() const { return {m_info.image_width, m_info.image_height}; }
    int Components() const { return m_info.num_components; }

    /// After ReadHeader.
    bool Decode(PictureSize wanted) {
        if (setjmp(m_errors.escape) != 0) {
            return false;
        }
        m_info.out_color_space = Components() == 4 ? JCS_CMYK : JCS_RGB;
        ChooseScale(wanted);
        jpeg_start_decompress(&m_info);
        m_image = RgbImage(PictureSize{m_info.output_width, m_info.output_height});
        m_row.resize(std::size_t{m_info.output_width} * static_cast<std::size_t>(m_info.output_components));
        while (m_info.output_scanline < m_info.output_height) {
            const std::size_t line = m_info.output_scanline;
            JSAMPROW row = m_row.data();
            if (jpeg_read_scanlines(&m_info, &row, 1) != 1) {
                return false;
            }
            StoreRow(m_image.pixels.data() + line * 3 * m_info.output_width);
        }
        return true;
    }

    RgbImage TakeImage() { return std::move(m_image); }

  private:
    /// Of the decoder's eighths, the fewest that still give what is wanted.
    void ChooseScale(PictureSize wanted) {
        m_info.scale_denom = 8;
        for (m_info.scale_num = 1; m_info.scale_num < 8; ++m_info.scale_num) {
            jpeg_calc_output_dimensions(&m_info);
            if (m_info.output_width >= wanted.width && m_info.output_height >= wanted.height) {
                return;
            }
        }
    }

    void StoreRow(std::uint8_t* out) const {
        if (m_info.output_components == 3) {
            std::copy(m_row.begin(), m_row.end(), out);
            return;
        }
        // Four components are stored inverted by what writes them.
        for (std::size_t i = 0; i + 3 < m_row.size(); i += 4) {
            for (std::size_t c = 0; c < 3; ++c) {
                *out++ = static_cast<std::uint8_t>(m_row[i + c] * m_row[i + 3] / 255);
            }
        }
    }

    JpegErrors m_errors;
    jpeg_progress_mgr m_progress{};
    jpeg_decompress_struct m_info{};
    RgbImage m_image;
    std::vector<std::uint8_t> m_row;
};

/// False: no JPEG, or one to refuse.
bool Begin(JpegDecoder& decoder, std::span<const std::uint8_t> bytes) {
    if (bytes.empty() || !decoder.ReadHeader(bytes)) {
        return false;
    }
    const PictureSize size = decoder.Size();
    return std::uint64_t{size.width} * size.height <= kMaxPixels;
}

class JpegEncoder {
  public:
    JpegEncoder() { m_info.err = &m_errors.manager; }
    ~JpegEncoder() {
        jpeg_destroy_compress(&m_info);
        std::free(m_bytes);
    }
    JpegEncoder(const JpegEncoder&) = delete;
    JpegEncoder& operator=(const JpegEncoder&) = delete;

    bool Encode(const RgbImage& image, int quality) {
        if (setjmp(m_errors.escape) != 0) {
            return false;
        }
        jpeg_create_compress(&m_info);
        jpeg_mem_dest(&m_info, &m_bytes, &m_size);
        m_info.image_width = image.size.width;
        m_info.image_height = image.size.height;
        m_info.input_components = 3;
        m_info.in_color_space = JCS_RGB;
        jpeg_set_defaults(&m_info);
        jpeg_set_quality(&m_info, quality, TRUE);
        jpeg_start_compress(&m_info, TRUE);
        while (m_info.next_scanline < m_info.image_height) {
            // The library takes rows that it does not write to as rows that it may write to.
            auto* row = const_cast<std::uint8_t*>(image.pixels.data()) +
                        std::size_t{3} * m_info.next_scanline * image.size.width;
            jpeg_write_scanlines(&m_info, &row, 1);
        }
        jpeg_finish_compress(&m_info);
        return true;
    }

    std::span<const std::uint8_t> Bytes() const { return {m_bytes, m_size}; }

  private:
    JpegErrors m_errors;
    jpeg_compress_struct m_info{};
    unsigned char* m_bytes = nullptr;  // malloc'ed by libjpeg
    unsigned long m_size = 0;
};

}  // namespace

std::optional<JpegHeader> ReadJpegHeader(std::span<const std::uint8_t> bytes) {
    JpegDecoder decoder;
    if (!Begin(decoder, bytes)) {
        return std::nullopt;
    }
    return JpegHeader{decoder.Size(), decoder.Components() == 1 || decoder.Components() == 3};
}

std::optional<RgbImage> DecodeJpeg(std::span<const std::uint8_t> bytes, PictureSize wanted) {
    JpegDecoder decoder;
    if (!Begin(decoder, bytes) || !decoder.Decode(wanted)) {
        return std::nullopt;
    }
    return decoder.TakeImage();
}

std::optional<Picture> EncodeJpeg(const RgbImage& image) {
    const std::uint64_t room = std::uint64_t{2} * image.size.width * image.size.height;
    for (const int quality : {90, 75, 50, 25}) {
        JpegEncoder encoder;
        if (!encoder.Encode(image, quality)) {
            return std::nullopt;
        }
        const auto bytes = encoder.Bytes();
        if (bytes.size() <= room) {
            return Picture{{bytes.begin(), bytes.end()}, image.size.width, image.size.height};
        }
    }
    return std::nullopt;
}

}  // namespace DeviceSimulator
