#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "IpodControl/DisplayText.h"
#include "IpodControl/view/View.h"

namespace IpodControl::PlayerView {

namespace {

constexpr Style kBold{.isBold = true};
constexpr Style kDim{.isDim = true};

struct Place {
    int row = 0;
    int column = 0;
    int rows = 0;
    int columns = 0;
};

/// Red, green, blue.
using Rgb = const std::uint8_t*;

/// Not one of the first 16: every terminal paints those as it likes.
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

/// The entry of the palette's first `colours` (8 or 256) that is nearest.
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

/// As large as the place allows, in the picture's own proportions: a cell is twice as high as wide. Without
/// colours it is shown in shades made of characters.
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

/// A frame with `text` in it.
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

struct StateText {
    const char* sign;
    const char* plainSign;
    const char* word;
};

const StateText& TextOf(const Playing& playing) {
    static constexpr StateText kSeeking{"»", ">>", "seeking"};
    static constexpr std::array<StateText, 4> kStates{
        {{"·", "-", "not known"}, {"■", "#", "stopped"}, {"‖", "=", "paused"}, {"▶", ">", "playing"}}};
    return playing.seeksForward ? kSeeking : kStates[static_cast<std::size_t>(playing.state)];
}

const char* Sign(const Playing& playing, Charset charset) {
    return charset == Charset::Ascii ? TextOf(playing).plainSign : TextOf(playing).sign;
}

std::string Modes(const Playing& playing, Charset charset) {
    const auto onOff = [](std::optional<bool> flag) { return !flag ? "?" : *flag ? "on" : "off"; };
    const std::string repeat = playing.repeat.empty()        ? "?"
                               : playing.repeat == "current" ? "one"
                                                             : playing.repeat;
    return std::string(Sign(playing, charset)) + " " + TextOf(playing).word + "   shuffle " +
           onOff(playing.shuffle) + "   repeat " + repeat + "   sound " + onOff(playing.stream);
}

/// In eighths of a cell where the terminal has characters for them.
void DrawBar(Canvas& canvas, int row, int column, int width, double share) {
    constexpr std::array kParts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const bool isPlain = canvas.Characters() == Charset::Ascii;
    const auto eighths = static_cast<int>(std::lround(std::clamp(share, 0.0, 1.0) * width * 8));
    for (int i = 0; i < width; ++i) {
        if (i < eighths / 8) {
            canvas.Put(row, column + i, isPlain ? "#" : "█");
        } else if (i == eighths / 8 && eighths % 8 != 0 && !isPlain) {
            canvas.Put(row, column + i, kParts[static_cast<std::size_t>(eighths % 8)]);
        } else {
            canvas.Put(row, column + i, isPlain ? "-" : "·", kDim);
        }
    }
}

void DrawProgress(Canvas& canvas, int row, int column, int width, const NowPlaying& nowPlaying) {
    if (!nowPlaying.Known().HasTrack()) {
        return;
    }
    const std::int64_t position = nowPlaying.Position();
    const std::int64_t duration = nowPlaying.Known().clock.Duration();
    const std::string times = ClockText(position) + (duration > 0 ? " / " + ClockText(duration) : "");
    const int bar = width - static_cast<int>(times.size()) - 2;
    if (duration > 0 && bar > 0) {
        DrawBar(canvas, row, column, bar, static_cast<double>(position) / static_cast<double>(duration));
        column += bar + 2;
    }
    canvas.Write(row, column, width, times);
}

std::string Title(const Playing& playing) {
    if (!playing.HasTrack()) {
        return playing.state == PlayState::Unknown ? "Nothing is known" : "Nothing is playing";
    }
    return playing.track.title.empty() ? "(no title)" : playing.track.title;
}

}  // namespace

void DrawNowPlaying(Canvas& canvas, int rows, const NowPlaying& nowPlaying, const Look& look) {
    const int columns = canvas.Extent().columns;
    const Playing& playing = nowPlaying.Known();
    int left = 1;
    if (columns >= 2 * rows + 40) {
        const Place place{0, 1, rows, 2 * rows};
        if (playing.coverState == CoverState::Shown) {
            DrawCover(canvas, place, playing.cover, look.colours);
        } else {
            DrawPlaceholder(canvas, place, playing.coverState == CoverState::None ? "no cover" : "bad cover");
        }
        left = 2 * rows + 3;
    }
    const int width = columns - left - 1;
    const Track& track = playing.track;
    canvas.Write(0, left, width, Title(playing), kBold);
    canvas.Write(1, left, width, track.artist);
    canvas.Write(2, left, width, track.album);
    if (rows > 5 && track.index >= 1 && track.count >= track.index) {
        canvas.Write(3, left, width, Grouped(track.index) + " of " + Grouped(track.count), kDim);
    }
    canvas.Write(rows - 2, left, width, Modes(playing, canvas.Characters()));
    DrawProgress(canvas, rows - 1, left, width, nowPlaying);
}

void DrawNowPlayingBriefly(Canvas& canvas, const NowPlaying& nowPlaying) {
    const int columns = canvas.Extent().columns;
    const Playing& playing = nowPlaying.Known();
    const std::string artist = playing.track.artist.empty() ? "" : " - " + playing.track.artist;
    canvas.Write(0, 0, columns, Sign(playing, canvas.Characters()) + (" " + Title(playing)) + artist, kBold);
    DrawProgress(canvas, 1, 0, columns, nowPlaying);
}

}  // namespace IpodControl::PlayerView
