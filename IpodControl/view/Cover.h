// A cover as colour blocks.
#pragma once

#include <string_view>

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
/// `colours`: how many the terminal has, 0, 8 or 256; without any the picture is shown in shades made of
/// characters. Of 256 the first 16 are left out: every terminal paints those as it likes.
void DrawCover(Canvas& canvas, const Place& place, const RgbImage& image, int colours);
/// A frame with `text` in it.
void DrawPlaceholder(Canvas& canvas, const Place& place, std::string_view text);

}  // namespace IpodControl::PlayerView
