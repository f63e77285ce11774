#include <algorithm>
#include <array>
#include <cmath>

#include "IpodControl/DisplayText.h"
#include "IpodControl/view/Cover.h"
#include "IpodControl/view/View.h"

namespace IpodControl::PlayerView {

namespace {

constexpr Style kBold{.isBold = true};
constexpr Style kDim{.isDim = true};

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
