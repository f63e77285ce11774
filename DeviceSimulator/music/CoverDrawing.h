// Covers for music that has none of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "DeviceSimulator/music/Picture.h"
#include "ServiceUtil/JpegImage.h"

namespace DeviceSimulator {

/// A colour gradient with a pattern, the same one for the same names. Any thread may call.
RgbImage DrawCoverImage(ImageSize size, std::string_view name, std::string_view artist);

/// The same as a JPEG, within its room where it has at least 100 x 100 pixels. Not null.
std::shared_ptr<const Picture> DrawPicture(PictureSize size, std::string_view name, std::string_view artist);

/// The cover of the album numbered `album`. The number gives the size (320, 480, 640 or 300 square; one of 32
/// is 600 x 300); one of 32 has none (null).
std::shared_ptr<const Picture> DrawCover(std::uint32_t album, std::string_view name, std::string_view artist);

}  // namespace DeviceSimulator
