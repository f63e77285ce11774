#include "IpodControl/view/Cover.h"

#include <algorithm>
#include <cstdlib>

namespace IpodControl::PlayerView {

namespace {

/// Steps of the palette's colour cube.
constexpr std::array<int, 6> kCube{0, 95, 135, 175, 215, 255};

int Distance(const Rgb& a, int red, int green, int blue) {
    const auto square = [](int difference) { return difference * difference; };
    // The eye tells greens apart best, blues worst.
    return 3 * square(a[0] - red) + 4 * square(a[1] - green) + 2 * square(a[2] - blue);
}

std::size_t CubeStep(int value) {
    const auto* const nearest = std::min_element(kCube.begin(), kCube.end(), [value](int a, int b) {
        return std::abs(a - value) < std::abs(b - value);
    });
    return static_cast<std::size_t>(nearest - kCube.begin());
}

int NearestOfCube(const Rgb& colour) {
    const std::size_t r = CubeStep(colour[0]);
    const std::size_t g = CubeStep(colour[1]);
    const std::size_t b = CubeStep(colour[2]);
    const int mean = (colour[0] + colour[1] + colour[2]) / 3;
    const int greyStep = std::clamp((mean - 3) / 10, 0, 23);
    const int grey = 8 + 10 * greyStep;
    if (Distance(colour, grey, grey, grey) < Distance(colour, kCube[r], kCube[g], kCube[b])) {
        return 232 + greyStep;
    }
    return static_cast<int>(16 + 36 * r + 6 * g + b);
}

int NearestOfEight(const Rgb& colour) {
    const auto bit = [&](std::size_t channel) { return colour[channel] >= 96 ? 1 : 0; };
    return bit(0) + 2 * bit(1) + 4 * bit(2);
}

const char* Shade(const Rgb& colour) {
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

int NearestColour(const Rgb& colour, int colours) {
    return colours >= 256 ? NearestOfCube(colour) : NearestOfEight(colour);
}

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
            const auto pixel = [&](std::uint32_t line) {
                const std::uint8_t* const channels = scaled.At(static_cast<std::uint32_t>(column), line);
                return Rgb{channels[0], channels[1], channels[2]};
            };
            const auto line = static_cast<std::uint32_t>(row);
            const int y = place.row + (place.rows - rows) / 2 + row;
            if (hasHalves) {
                canvas.Put(
                    y, left + column, "▀",
                    {NearestColour(pixel(2 * line), colours), NearestColour(pixel(2 * line + 1), colours)});
            } else if (colours >= 8) {
                canvas.Put(y, left + column, " ", {-1, NearestColour(pixel(line), colours)});
            } else {
                canvas.Put(y, left + column, Shade(pixel(line)));
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
    const int columns = Columns(Fit(text, place.columns - 2, canvas.Characters()));
    canvas.Write(place.row + place.rows / 2, place.column + (place.columns - columns) / 2, columns, text,
                 style);
}

}  // namespace IpodControl::PlayerView
