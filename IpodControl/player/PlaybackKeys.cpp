// What the keys do to what plays: the status line says it at once, the answer confirms or takes it back.
#include <functional>
#include <utility>

#include "IpodControl/player/Fields.h"
#include "IpodControl/player/Playback.h"

namespace IpodControl::PlayerView {

namespace {

/// Longer than the pause of a held key before it repeats.
constexpr std::chrono::milliseconds kHold(700);

Json::Value Enable(bool isOn) {
    Json::Value params;
    params["enable"] = isOn;
    return params;
}

const char* Word(Repeat repeat) {
    switch (repeat) {
        case Repeat::All:
            return "all";
        case Repeat::One:
            return "current";
        default:
            return "off";
    }
}

std::string Why(const Reply& reply) {
    return reply.error ? ": " + reply.error->message : std::string();
}

}  // namespace

void Playback::Ask(const char* method, Json::Value params, const char* what, const char* flag,
                   std::function<void(bool)> took) {
    m_session.Ask(method, std::move(params), [=, this, took = std::move(took)](const Reply& reply) {
        const auto value = FlagIn(reply.result, flag);
        if (!value) {
            m_session.Refuse(std::string("The service could not ") + what + Why(reply));
            return;
        }
        took(*value);
    });
}

void Playback::PlayPause() {
    const bool isPlaying = m_state == PlayState::Playing;
    const char* const what = isPlaying ? "pause" : "play";
    m_session.Say(isPlaying ? "Pausing" : "Starting to play");
    Ask("playPause", {}, what, "success", [this, isPlaying](bool isDone) {
        if (isDone) {
            SetState(isPlaying ? PlayState::Paused : PlayState::Playing);
            m_session.notice = {};
        } else {
            m_session.Refuse(isPlaying ? "The player refused to pause" : "The player refused to play");
        }
    });
}

void Playback::Skip(bool isForward) {
    m_session.Say(isForward ? "Next track" : "Previous track");
    Ask(isForward ? "next" : "previous", {}, "change the track", "success", [this](bool isDone) {
        if (!isDone) {
            m_session.Refuse("The player refused to change the track");
        }
    });
}

void Playback::Seek(bool isForward) {
    m_seekEnd = m_session.now + kHold;
    if (m_seekForward == isForward) {
        return;
    }
    if (m_seekForward) {
        EndSeek();
        return;
    }
    m_seekForward = isForward;
    m_session.Say(isForward ? "Seeking forward" : "Seeking back");
    SendSeek(isForward, true);
}

void Playback::EndSeek() {
    if (m_seekForward) {
        SendSeek(*std::exchange(m_seekForward, std::nullopt), false);
    }
}

void Playback::SendSeek(bool isForward, bool isOn) {
    Ask(isForward ? "fastForwardSong" : "rewindSong", Enable(isOn), "seek", "enabled",
        [this, isOn](bool isDone) {
            if (!isDone && isOn) {
                m_seekForward.reset();
                m_session.Refuse("The player refused to seek");
            } else if (!isOn) {
                m_session.notice = {};
            }
        });
}

void Playback::ToggleShuffle() {
    const bool wanted = !m_shuffle.value_or(false);
    m_session.Say(wanted ? "Shuffle on" : "Shuffle off");
    Ask("enableShuffle", Enable(wanted), "change shuffle", "enabled", [this, wanted](bool isOn) {
        m_shuffle = isOn;
        if (isOn != wanted) {
            m_session.Refuse(isOn ? "The player keeps shuffle on" : "The player keeps shuffle off");
        }
    });
}

void Playback::NextRepeat() {
    const Repeat wanted = m_repeat == Repeat::Off   ? Repeat::One
                          : m_repeat == Repeat::One ? Repeat::All
                                                    : Repeat::Off;
    Json::Value params;
    params["mode"] = Word(wanted);
    m_session.Say(std::string("Repeat ") + (wanted == Repeat::One ? "one" : Word(wanted)));
    m_session.Ask("setRepeatMode", params, [this, wanted](const Reply& reply) {
        TakeRepeat(reply);
        if (m_repeat != wanted) {
            m_session.Refuse("The player keeps its repeat mode" + Why(reply));
        }
    });
}

void Playback::ToggleStream() {
    const bool isStop = m_stream.value_or(false);
    m_session.Say(isStop ? "Ending the sound" : "Starting the sound");
    m_session.Ask(isStop ? "stop" : "start", {}, [this, isStop](const Reply& reply) {
        if (!reply.result.isString()) {
            m_session.Refuse("The service could not change the sound" + Why(reply));
            return;
        }
        // Refused: somebody else has done it.
        m_stream = !isStop;
        if (reply.result != "success") {
            m_session.Refuse(isStop ? "The sound was off already" : "The sound was on already");
        } else {
            m_session.Say(isStop ? "The sound is off" : "The sound is on");
        }
    });
}

}  // namespace IpodControl::PlayerView
