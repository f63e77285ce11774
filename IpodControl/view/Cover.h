// A cover as colour blocks.
#pragma once

#include <array>

#include "IpodControl/view/Canvas.h"
#include "ServiceUtil/JpegImage.h"

namespace IpodControl::PlayerView {

struct Place {
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
};

/// As large as the place allows, in the picture's own proportions: a cell is twice as high as wide.
/// `colours`: how many the terminal has; below 8 the picture is shown in shades made of characters.
void DrawCover(Canvas& canvas, const Place& place, const RgbImage& image, int colours);
/// A frame with `text` in it.
void DrawPlaceholder(Canvas& canvas, const Place& place, std::string_view text);

/// The entry of the palette's first `colours` (8, 16 or 256) that is nearest. Of 256 the first 16 are left
/// out: every terminal paints those as it likes.
using Rgb = std::array<std::uint8_t, 3>;
int NearestColour(const Rgb& colour, int colours);

}  // namespace IpodControl::PlayerView
