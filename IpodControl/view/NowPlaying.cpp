#include "IpodControl/view/NowPlaying.h"

#include <algorithm>
#include <utility>

#include "ServiceUtil/Base64.h"

namespace IpodControl::PlayerView {

namespace {

constexpr std::chrono::milliseconds kFrame(250);
/// No notification tells that the player has stopped; while it plays, the time comes once a second.
constexpr std::chrono::seconds kSilence(4);

/// The service sends some hundred pixels a side; a terminal shows fewer.
std::optional<RgbImage> DecodeCover(std::string_view base64) {
    constexpr std::uint32_t kLongestSide = 256;
    constexpr JpegLimits kLimits{.pixels = 1 << 22, .width = 1 << 12, .heldCoefficients = 12 << 20};
    const std::string bytes = DecodeBase64(base64).value_or("");
    return DecodeJpeg({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, kLongestSide,
                      kLimits);
}

}  // namespace

void NowPlaying::Start() {
    AskTrack();
    AskModes();
    AskCover();
}

void NowPlaying::Stop(bool hasService) {
    m_known = {};
    if (hasService) {
        // The service ends its stream with the device.
        m_known.stream = false;
    }
}

/// The answer has no position, and says that it plays whatever it does: the notification behind it counts.
void NowPlaying::AskTrack() {
    m_context.Ask({"getCurrentTrackInfo"});
}

void NowPlaying::AskModes() {
    m_context.Ask({"getRepeatMode"}, [this](const Reply& reply) { TakeRepeat(reply); });
    m_context.Ask({"isShuffleEnabled"},
                  [this](const Reply& reply) { m_known.shuffle = FlagMember(reply.result, "enabled"); });
}

void NowPlaying::TakeRepeat(const Reply& reply) {
    const std::string mode = TextMember(reply.result, "mode");
    m_known.repeat = mode == "off" || mode == "all" || mode == "current" ? mode : "";
}

void NowPlaying::AskCover() {
    m_context.Ask({"getCurrentAlbumArtDelayed"});
}

/// What does not play is paused or stopped.
void NowPlaying::AskPaused() {
    m_context.Ask({"isTrackPaused"}, [this](const Reply& reply) {
        const auto isPaused = FlagMember(reply.result, "isPaused");
        if (isPaused && m_known.state != PlayState::Playing) {
            SetState(*isPaused ? PlayState::Paused : PlayState::Stopped);
        }
    });
}

void NowPlaying::Take(const std::string& method, const Json::Value& params) {
    m_heard = m_context.now;
    if (method == "trackInfoNotification") {
        TakeTrack(Member(params, "trackInfo"));
    } else if (method == "trackTimeNotification") {
        m_known.clock.SetDuration(IntegerMember(params, "trackDuration").value_or(m_known.clock.Duration()));
        if (const auto position = IntegerMember(params, "trackTime")) {
            m_known.clock.Correct(*position, m_context.now);
        }
    } else if (method == "trackPausedNotification") {
        if (const auto isPaused = FlagMember(params, "isTrackPaused")) {
            SetState(*isPaused ? PlayState::Paused : PlayState::Playing);
        }
    } else if (method == "ipodAlbumArtNotification") {
        TakeCover(params);
    }
}

void NowPlaying::TakeTrack(const Json::Value& info) {
    const auto isPlaying = FlagMember(info, "isPlaying");
    if (!isPlaying) {
        return;
    }
    Track track{TextMember(info, "trackTitle"), TextMember(info, "trackArtist"),
                TextMember(info, "trackAlbum"), IntegerMember(info, "trackIndex").value_or(0),
                IntegerMember(info, "trackCount").value_or(0)};
    const std::int64_t position = IntegerMember(info, "trackTime").value_or(0);
    const std::int64_t duration = IntegerMember(info, "trackDuration").value_or(0);
    if (track == m_known.track && duration == m_known.clock.Duration()) {
        m_known.clock.Correct(position, m_context.now);
    } else {
        if (track.album != m_known.track.album || track.artist != m_known.track.artist) {
            m_known.coverState = CoverState::None;
        }
        m_known.track = std::move(track);
        m_known.clock.Start(position, duration, m_context.now);
        // Another client's changes of the modes are told to nobody.
        AskModes();
        AskCover();
    }
    if (*isPlaying) {
        SetState(PlayState::Playing);
    } else {
        if (m_known.state == PlayState::Playing) {
            SetState(PlayState::Paused);
        }
        AskPaused();
    }
}

void NowPlaying::TakeCover(const Json::Value& params) {
    // Of a track that has been left since.
    if (IntegerMember(params, "trackIndex").value_or(m_known.track.index) != m_known.track.index) {
        return;
    }
    const std::string art = TextMember(params, "albumArt");
    if (art.empty()) {
        m_known.coverState = CoverState::None;
        return;
    }
    auto picture = DecodeCover(art);
    m_known.coverState = picture ? CoverState::Shown : CoverState::Broken;
    m_known.cover = std::move(picture).value_or(RgbImage{});
}

void NowPlaying::SetState(PlayState state) {
    m_known.state = state;
    m_known.clock.SetRunning(state == PlayState::Playing, m_context.now);
}

void NowPlaying::Tick() {
    if (m_known.seeksForward && m_context.now >= m_seekEnd) {
        EndSeek();
    }
    if (m_known.state == PlayState::Playing && m_context.now >= m_heard + kSilence) {
        m_heard = m_context.now;
        AskTrack();
    }
}

std::optional<Time> NowPlaying::NextWake() const {
    std::optional<Time> wake;
    if (m_known.clock.IsRunning()) {
        wake = m_context.now + kFrame;
    }
    if (m_known.seeksForward) {
        wake = std::min(wake.value_or(m_seekEnd), m_seekEnd);
    }
    return wake;
}

}  // namespace IpodControl::PlayerView
