#include "IpodControl/view/Cover.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace IpodControl::PlayerView {

namespace {

/// Red, green, blue.
using Rgb = const std::uint8_t*;

int NearestOfCube(Rgb colour) {
    constexpr std::array<int, 6> kSteps{0, 95, 135, 175, 215, 255};
    const auto stepOf = [&](int value) {
        const auto* const nearest = std::min_element(kSteps.begin(), kSteps.end(), [value](int a, int b) {
            return std::abs(a - value) < std::abs(b - value);
        });
        return static_cast<std::size_t>(nearest - kSteps.begin());
    };
    const auto distance = [colour](int red, int green, int blue) {
        const auto square = [](int difference) { return difference * difference; };
        // The eye tells greens apart best, blues worst.
        return 3 * square(colour[0] - red) + 4 * square(colour[1] - green) + 2 * square(colour[2] - blue);
    };
    const std::size_t r = stepOf(colour[0]);
    const std::size_t g = stepOf(colour[1]);
    const std::size_t b = stepOf(colour[2]);
    const int mean = (colour[0] + colour[1] + colour[2]) / 3;
    const int greyStep = std::clamp((mean - 3) / 10, 0, 23);
    const int grey = 8 + 10 * greyStep;
    if (distance(grey, grey, grey) < distance(kSteps[r], kSteps[g], kSteps[b])) {
        return 232 + greyStep;
    }
    return static_cast<int>(16 + 36 * r + 6 * g + b);
}

/// The entry of the palette's first `colours` that is nearest.
int Nearest(Rgb colour, int colours) {
    const auto bit = [colour](int channel) { return colour[channel] >= 96 ? 1 : 0; };
    return colours >= 256 ? NearestOfCube(colour) : bit(0) + 2 * bit(1) + 4 * bit(2);
}

const char* Shade(Rgb colour) {
    constexpr std::array kShades{" ", ".", ":", "-", "=", "+", "*", "#", "%", "@"};
    const int brightness = (3 * colour[0] + 6 * colour[1] + colour[2]) / 10;
    return kShades[static_cast<std::size_t>(brightness) * kShades.size() / 256];
}

/// The largest size of those proportions that fits, in pixels of half a cell's height.
Size Inside(const Place& place, const RgbImage& image) {
    const auto width = static_cast<int>(image.size.width);
    const auto height = static_cast<int>(image.size.height);
    Size size{2 * place.rows, 2 * place.rows * width / height};
    if (size.columns > place.columns) {
        size = {place.columns * height / width, place.columns};
    }
    return {std::max(size.rows, 1), std::max(size.columns, 1)};
}

}  // namespace

void DrawCover(Canvas& canvas, const Place& place, const RgbImage& image, int colours) {
    if (image.pixels.empty() || place.rows <= 0 || place.columns <= 0) {
        return;
    }
    const bool hasHalves = canvas.Characters() == Charset::Utf8 && colours >= 8;
    const Size size = Inside(place, image);
    const int rows = (size.rows + 1) / 2;
    const RgbImage scaled = Resize(image, {static_cast<std::uint32_t>(size.columns),
                                           static_cast<std::uint32_t>(hasHalves ? 2 * rows : rows)});
    const int left = place.column + (place.columns - size.columns) / 2;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < size.columns; ++column) {
            const auto pixel = [&](int line) {
                return scaled.At(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(line));
            };
            const int y = place.row + (place.rows - rows) / 2 + row;
            if (hasHalves) {
                canvas.Put(y, left + column, "▀",
                           {Nearest(pixel(2 * row), colours), Nearest(pixel(2 * row + 1), colours)});
            } else if (colours >= 8) {
                canvas.Put(y, left + column, " ", {-1, Nearest(pixel(row), colours)});
            } else {
                canvas.Put(y, left + column, Shade(pixel(row)));
            }
        }
    }
}

void DrawPlaceholder(Canvas& canvas, const Place& place, std::string_view text) {
    const Style style{.isDim = true};
    const int bottom = place.row + place.rows - 1;
    const int right = place.column + place.columns - 1;
    for (int column = place.column; column <= right; ++column) {
        canvas.Put(place.row, column, "-", style);
        canvas.Put(bottom, column, "-", style);
    }
    for (int row = place.row; row <= bottom; ++row) {
        const char* edge = row == place.row || row == bottom ? "+" : "|";
        canvas.Put(row, place.column, edge, style);
        canvas.Put(row, right, edge, style);
    }
    const int columns = std::min(canvas.Columns(text), place.columns - 2);
    canvas.Write(place.row + place.rows / 2, place.column + (place.columns - columns) / 2, columns, text,
                 style);
}

}  // namespace IpodControl::PlayerView
