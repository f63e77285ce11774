#include "tests/IpodService/TestPictures.h"

#include <glib.h>
#include <png.h>

#include <cstdio>
// libjpeg's header needs <cstdio> before it.
#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>
#include <cstdlib>

namespace {

constexpr int kChannels = 3;
constexpr std::array<std::array<u8, 3>, 4> kFields{
    {{200, 30, 30}, {30, 200, 30}, {30, 30, 200}, {90, 90, 90}}};

PictureBytes DrawFields(int width, int height) {
    PictureBytes pixels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const std::array<u8, 3>& field =
                kFields[static_cast<size_t>((2 * y >= height ? 2 : 0) + (2 * x >= width ? 1 : 0))];
            pixels.insert(pixels.end(), field.begin(), field.end());
        }
    return pixels;
}

struct DecoderErrors {
    jpeg_error_mgr base;
    std::jmp_buf jump;
};

}  // namespace

PictureBytes MakeJpeg(int width, int height) {
    PictureBytes pixels = DrawFields(width, height);
    jpeg_compress_struct codec;
    jpeg_error_mgr errors;
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* memory = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &memory, &size);
    codec.image_width = static_cast<JDIMENSION>(width);
    codec.image_height = static_cast<JDIMENSION>(height);
    codec.input_components = kChannels;
    codec.in_color_space = JCS_RGB;
    jpeg_set_defaults(&codec);
    jpeg_start_compress(&codec, TRUE);
    while (codec.next_scanline < codec.image_height) {
        JSAMPROW row = &pixels[codec.next_scanline * codec.image_width * kChannels];
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    PictureBytes encoded(memory, memory + size);
    std::free(memory);
    return encoded;
}

PictureBytes MakePng(int width, int height) {
    const PictureBytes pixels = DrawFields(width, height);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = 0;
    png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr);
    PictureBytes encoded(size);
    png_image_write_to_memory(&image, encoded.data(), &size, 0, pixels.data(), 0, nullptr);
    encoded.resize(size);
    return encoded;
}

PictureBytes MakeJpegClaiming(int width, int height) {
    constexpr u8 kStartOfFrame[] = {0xFF, 0xC0};
    PictureBytes jpeg = MakeJpeg(16, 16);
    const auto frame =
        std::search(jpeg.begin(), jpeg.end(), std::begin(kStartOfFrame), std::end(kStartOfFrame));
    frame[5] = static_cast<u8>(height >> 8);
    frame[6] = static_cast<u8>(height);
    frame[7] = static_cast<u8>(width >> 8);
    frame[8] = static_cast<u8>(width);
    return jpeg;
}

std::array<int, 3> DecodedPicture::ColourAt(int xPercent, int yPercent) const {
    const int at = (height * yPercent / 100 * width + width * xPercent / 100) * kChannels;
    const u8* pixel = &pixels[static_cast<size_t>(at)];
    return {pixel[0], pixel[1], pixel[2]};
}

PictureBytes DecodeBase64(const std::string& text) {
    gsize size = 0;
    guchar* memory = g_base64_decode(text.c_str(), &size);
    PictureBytes bytes(memory, memory + size);
    g_free(memory);
    return bytes;
}

std::optional<DecodedPicture> DecodeBase64Jpeg(const std::string& text) {
    const PictureBytes jpeg = DecodeBase64(text);
    DecodedPicture picture;
    jpeg_decompress_struct codec;
    DecoderErrors errors;
    codec.err = jpeg_std_error(&errors.base);
    errors.base.error_exit = [](j_common_ptr failed) {
        std::longjmp(reinterpret_cast<DecoderErrors*>(failed->err)->jump, 1);
    };
    jpeg_create_decompress(&codec);
    if (setjmp(errors.jump) != 0) {
        jpeg_destroy_decompress(&codec);
        return std::nullopt;
    }
    jpeg_mem_src(&codec, jpeg.data(), static_cast<unsigned long>(jpeg.size()));
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    picture.width = static_cast<int>(codec.output_width);
    picture.height = static_cast<int>(codec.output_height);
    picture.pixels.resize(codec.output_width * codec.output_height * kChannels);
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = &picture.pixels[codec.output_scanline * codec.output_width * kChannels];
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    return picture;
}
