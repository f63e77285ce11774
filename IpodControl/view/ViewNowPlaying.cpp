#include <algorithm>
#include <array>
#include <cmath>

#include "IpodControl/DisplayText.h"
#include "IpodControl/view/Cover.h"
#include "IpodControl/view/ViewParts.h"

namespace IpodControl::PlayerView {

namespace {

constexpr Style kBold{.isBold = true};
constexpr Style kDim{.isDim = true};

struct StateText {
    const char* sign;
    const char* plainSign;
    const char* word;
};

StateText TextOf(const NowPlaying& nowPlaying) {
    if (nowPlaying.IsSeeking()) {
        return {"»", ">>", "seeking"};
    }
    switch (nowPlaying.State()) {
        case PlayState::Playing:
            return {"▶", ">", "playing"};
        case PlayState::Paused:
            return {"‖", "=", "paused"};
        case PlayState::Stopped:
            return {"■", "#", "stopped"};
        default:
            return {"·", "-", "not known"};
    }
}

std::string Sign(const NowPlaying& nowPlaying, Charset charset) {
    const StateText text = TextOf(nowPlaying);
    return charset == Charset::Ascii ? text.plainSign : text.sign;
}

const char* OnOff(std::optional<bool> flag) {
    if (!flag) {
        return "?";
    }
    return *flag ? "on" : "off";
}

const char* Word(Repeat repeat) {
    constexpr std::array kWords{"?", "off", "all", "one"};
    return kWords[static_cast<std::size_t>(repeat)];
}

std::string Modes(const NowPlaying& nowPlaying, Charset charset) {
    return Sign(nowPlaying, charset) + " " + TextOf(nowPlaying).word + "   shuffle " +
           OnOff(nowPlaying.Shuffle()) + "   repeat " + Word(nowPlaying.RepeatMode()) + "   sound " +
           OnOff(nowPlaying.Stream());
}

std::string Times(const NowPlaying& nowPlaying) {
    return ClockText(nowPlaying.Position()) +
           (nowPlaying.Duration() > 0 ? " / " + ClockText(nowPlaying.Duration()) : std::string());
}

std::string PlaceText(const Track& track) {
    return track.index >= 1 && track.count >= track.index
               ? Grouped(track.index) + " of " + Grouped(track.count)
               : std::string();
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
    const std::string times = Times(nowPlaying);
    const int bar = width - static_cast<int>(times.size()) - 2;
    if (nowPlaying.Duration() > 0 && bar > 0) {
        DrawBar(canvas, row, column, bar,
                static_cast<double>(nowPlaying.Position()) / static_cast<double>(nowPlaying.Duration()));
        column += bar + 2;
    }
    canvas.Write(row, column, width, times);
}

void DrawCoverPart(Canvas& canvas, const PlayerView::Place& place, const NowPlaying& nowPlaying,
                   const Look& look) {
    if (nowPlaying.Cover() == CoverState::Shown) {
        DrawCover(canvas, place, nowPlaying.CoverPicture(), look.colours);
    } else {
        DrawPlaceholder(canvas, place, nowPlaying.Cover() == CoverState::None ? "no cover" : "bad cover");
    }
}

/// Whether a track is known: a stopped player has none.
bool HasTrack(const NowPlaying& nowPlaying) {
    return !nowPlaying.Current().title.empty() || nowPlaying.Duration() > 0;
}

std::string Title(const NowPlaying& nowPlaying) {
    if (!HasTrack(nowPlaying)) {
        return nowPlaying.State() == PlayState::Unknown ? "Nothing is known" : "Nothing is playing";
    }
    return nowPlaying.Current().title.empty() ? "(no title)" : nowPlaying.Current().title;
}

}  // namespace

void DrawNowPlaying(Canvas& canvas, const Layout& layout, const NowPlaying& nowPlaying, const Look& look) {
    const int rows = layout.nowPlayingRows - 1;
    const int columns = canvas.Extent().columns;
    int left = 1;
    if (columns >= 2 * rows + 40) {
        DrawCoverPart(canvas, {0, 1, rows, 2 * rows}, nowPlaying, look);
        left = 2 * rows + 3;
    }
    const int width = columns - left - 1;
    const Track& track = nowPlaying.Current();
    canvas.Write(0, left, width, Title(nowPlaying), kBold);
    canvas.Write(1, left, width, track.artist);
    canvas.Write(2, left, width, track.album);
    if (rows > 5) {
        canvas.Write(3, left, width, PlaceText(track), kDim);
    }
    canvas.Write(rows - 2, left, width, Modes(nowPlaying, canvas.Characters()));
    if (HasTrack(nowPlaying)) {
        DrawProgress(canvas, rows - 1, left, width, nowPlaying);
    }
}

void DrawNowPlayingBriefly(Canvas& canvas, const NowPlaying& nowPlaying) {
    const int columns = canvas.Extent().columns;
    const std::string artist = nowPlaying.Current().artist;
    canvas.Write(0, 0, columns,
                 Sign(nowPlaying, canvas.Characters()) + " " + Title(nowPlaying) +
                     (artist.empty() ? "" : " - " + artist),
                 kBold);
    if (HasTrack(nowPlaying)) {
        DrawProgress(canvas, 1, 0, columns, nowPlaying);
    }
}

}  // namespace IpodControl::PlayerView
