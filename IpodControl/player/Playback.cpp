#include "IpodControl/player/Playback.h"

#include <algorithm>
#include <utility>

#include "IpodControl/Base64.h"
#include "IpodControl/player/Fields.h"

namespace IpodControl::PlayerView {

namespace {

constexpr std::chrono::milliseconds kFrame(250);

}  // namespace

void Playback::Start() {
    // The answer has no position, and says that it plays whatever it does: the notification behind it counts.
    m_session.Ask("getCurrentTrackInfo", {}, [](const Reply&) {});
    AskModes();
    AskCover();
}

void Playback::Stop(bool hasService) {
    m_state = PlayState::Unknown;
    m_track = {};
    m_clock = {};
    m_seekForward.reset();
    m_shuffle.reset();
    m_repeat = Repeat::Unknown;
    // The service ends its stream with the device.
    m_stream = hasService ? std::optional(false) : std::nullopt;
    m_coverState = CoverState::None;
    m_cover = {};
}

void Playback::AskModes() {
    m_session.Ask("getRepeatMode", {}, [this](const Reply& reply) { TakeRepeat(reply); });
    m_session.Ask("isShuffleEnabled", {},
                  [this](const Reply& reply) { m_shuffle = FlagIn(reply.result, "enabled"); });
}

void Playback::TakeRepeat(const Reply& reply) {
    const std::string mode = TextIn(reply.result, "mode");
    m_repeat = mode == "off"       ? Repeat::Off
               : mode == "all"     ? Repeat::All
               : mode == "current" ? Repeat::One
                                   : Repeat::Unknown;
}

void Playback::AskCover() {
    m_session.Ask("getCurrentAlbumArtDelayed", {}, [](const Reply&) {});
}

/// What does not play is paused or stopped.
void Playback::AskPaused() {
    m_session.Ask("isTrackPaused", {}, [this](const Reply& reply) {
        const auto isPaused = FlagIn(reply.result, "isPaused");
        if (isPaused && m_state != PlayState::Playing) {
            SetState(*isPaused ? PlayState::Paused : PlayState::Stopped);
        }
    });
}

bool Playback::Take(const std::string& method, const Json::Value& params) {
    if (method == "trackInfoNotification") {
        TakeTrack(Field(params, "trackInfo"));
    } else if (method == "trackTimeNotification") {
        m_clock.SetDuration(IntegerField(params, "trackDuration").value_or(m_clock.Duration()));
        if (const auto position = IntegerField(params, "trackTime")) {
            m_clock.Correct(*position, m_session.now);
        }
    } else if (method == "trackPausedNotification") {
        if (const auto isPaused = FlagIn(params, "isTrackPaused")) {
            SetState(*isPaused ? PlayState::Paused : PlayState::Playing);
        }
    } else if (method == "ipodAlbumArtNotification") {
        TakeCover(params);
    } else {
        return false;
    }
    return true;
}

void Playback::TakeTrack(const Json::Value& info) {
    const auto isPlaying = FlagIn(info, "isPlaying");
    if (!isPlaying) {
        return;
    }
    Track track{TextIn(info, "trackTitle"), TextIn(info, "trackArtist"), TextIn(info, "trackAlbum"),
                IntegerField(info, "trackIndex").value_or(0), IntegerField(info, "trackCount").value_or(0)};
    const std::int64_t position = IntegerField(info, "trackTime").value_or(0);
    const std::int64_t duration = IntegerField(info, "trackDuration").value_or(0);
    if (track == m_track && duration == m_clock.Duration()) {
        m_clock.Correct(position, m_session.now);
    } else {
        if (track.album != m_track.album || track.artist != m_track.artist) {
            m_coverState = CoverState::None;
        }
        m_track = std::move(track);
        m_clock.Start(position, duration, m_session.now);
        // Another client's changes of the modes are told to nobody.
        AskModes();
        AskCover();
    }
    if (*isPlaying) {
        SetState(PlayState::Playing);
    } else {
        if (m_state == PlayState::Playing) {
            SetState(PlayState::Paused);
        }
        AskPaused();
    }
}

void Playback::TakeCover(const Json::Value& params) {
    // Of a track that has been left since.
    if (IntegerField(params, "trackIndex").value_or(m_track.index) != m_track.index) {
        return;
    }
    const Json::Value& art = Field(params, "albumArt");
    const char* begin = nullptr;
    const char* end = nullptr;
    if (!art.isString() || !art.getString(&begin, &end) || begin == end) {
        m_coverState = CoverState::None;
        return;
    }
    auto picture = DecodeJpeg(DecodeBase64({begin, static_cast<std::size_t>(end - begin)}).value_or(""));
    m_coverState = picture ? CoverState::Shown : CoverState::Broken;
    m_cover = std::move(picture).value_or(Picture{});
}

void Playback::SetState(PlayState state) {
    m_state = state;
    m_clock.SetRunning(state == PlayState::Playing, m_session.now);
}

void Playback::Tick() {
    if (m_seekForward && m_session.now >= m_seekEnd) {
        EndSeek();
    }
}

std::optional<Time> Playback::NextWake() const {
    std::optional<Time> wake;
    if (m_clock.IsRunning()) {
        wake = m_session.now + kFrame;
    }
    if (m_seekForward) {
        wake = std::min(wake.value_or(m_seekEnd), m_seekEnd);
    }
    return wake;
}

}  // namespace IpodControl::PlayerView
