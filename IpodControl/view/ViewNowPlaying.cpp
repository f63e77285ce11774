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

/// As large as `rows` rows and twice as many columns allow, in the picture's own proportions: a cell is twice
/// as high as wide. Without colours it is shown in shades made of characters.
void DrawCover(Canvas& canvas, int rows, const RgbImage& image, int colours) {
    if (image.pixels.empty()) {
        return;
    }
    const bool hasHalves = canvas.Characters() == Charset::Utf8 && colours >= 8;
    const auto width = static_cast<int>(image.size.width);
    const auto height = static_cast<int>(image.size.height);
    // In pixels of half a cell's height.
    const int side = 2 * rows;
    const int columns = std::max(width < height ? side * width / height : side, 1);
    const int lines = (std::max(width < height ? side : side * height / width, 1) + 1) / 2;
    const RgbImage scaled = Resize(image, {static_cast<std::uint32_t>(columns),
                                           static_cast<std::uint32_t>(hasHalves ? 2 * lines : lines)});
    for (int line = 0; line < lines; ++line) {
        for (int i = 0; i < columns; ++i) {
            const auto pixel = [&](int y) {
                return scaled.At(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(y));
            };
            const int row = (rows - lines) / 2 + line;
            const int column = 1 + (side - columns) / 2 + i;
            if (hasHalves) {
                canvas.Put(row, column, "▀",
                           {Nearest(pixel(2 * line), colours), Nearest(pixel(2 * line + 1), colours)});
            } else if (colours >= 8) {
                canvas.Put(row, column, " ", {-1, Nearest(pixel(line), colours)});
            } else {
                canvas.Put(row, column, Shade(pixel(line)));
            }
        }
    }
}

/// A frame in its place with `text` in it.
void DrawPlaceholder(Canvas& canvas, int rows, std::string_view text) {
    const int columns = 2 * rows;
    for (int column = 1; column <= columns; ++column) {
        canvas.Put(0, column, "-", kDim);
        canvas.Put(rows - 1, column, "-", kDim);
    }
    for (int row = 0; row < rows; ++row) {
        const char* const edge = row == 0 || row == rows - 1 ? "+" : "|";
        canvas.Put(row, 1, edge, kDim);
        canvas.Put(row, columns, edge, kDim);
    }
    const int width = std::min(canvas.Columns(text), columns - 2);
    canvas.Write(rows / 2, 1 + (columns - width) / 2, width, text, kDim);
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
        if (playing.coverState == CoverState::Shown) {
            DrawCover(canvas, rows, playing.cover, look.colours);
        } else {
            DrawPlaceholder(canvas, rows, playing.coverState == CoverState::None ? "no cover" : "bad cover");
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
