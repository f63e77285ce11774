// Pictures to feed to the album art, and a look at what becomes of them.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"

using PictureBytes = std::vector<u8>;

/// Four fields: red, green, blue and grey, from the upper left corner on, line by line.
PictureBytes MakeJpeg(int width, int height);
PictureBytes MakePng(int width, int height);
/// A JPEG whose header claims a size that its data do not have.
PictureBytes MakeJpegClaiming(int width, int height);

struct DecodedPicture {
    int width = 0;
    int height = 0;
    PictureBytes pixels;  ///< RGB

    /// The colour at a place given in hundredths of the size.
    std::array<int, 3> ColourAt(int xPercent, int yPercent) const;
};

/// A JPEG in base64; nothing when it is none.
std::optional<DecodedPicture> DecodeBase64Jpeg(const std::string& text);
PictureBytes DecodeBase64(const std::string& text);
