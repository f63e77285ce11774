// What the keys do to what plays: the status line says it at once, the answer confirms or takes it back.
#include <functional>
#include <utility>

#include "IpodControl/view/NowPlaying.h"

namespace IpodControl::PlayerView {

namespace {

/// Longer than the pause of a held key before it repeats.
constexpr std::chrono::milliseconds kHold(700);

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

void NowPlaying::Ask(const char* method, Json::Value params, const char* what, const char* flag,
                     std::function<void(bool)> took) {
    m_context.Ask(method, std::move(params), [=, this, took = std::move(took)](const Reply& reply) {
        const auto value = FlagMember(reply.result, flag);
        if (!value) {
            m_context.Refuse(std::string("The service could not ") + what + Why(reply));
            return;
        }
        took(*value);
    });
}

void NowPlaying::PlayPause() {
    const bool isPlaying = m_state == PlayState::Playing;
    const char* const what = isPlaying ? "pause" : "play";
    m_context.Say(isPlaying ? "Pausing" : "Starting to play");
    Ask("playPause", {}, what, "success", [this, isPlaying](bool isDone) {
        if (isDone) {
            SetState(isPlaying ? PlayState::Paused : PlayState::Playing);
            m_context.notice = {};
        } else {
            m_context.Refuse(isPlaying ? "The player refused to pause" : "The player refused to play");
        }
    });
}

void NowPlaying::Skip(bool isForward) {
    m_context.Say(isForward ? "Next track" : "Previous track");
    Ask(isForward ? "next" : "previous", {}, "change the track", "success", [this](bool isDone) {
        if (!isDone) {
            m_context.Refuse("The player refused to change the track");
        }
    });
}

void NowPlaying::Seek(bool isForward) {
    m_seekEnd = m_context.now + kHold;
    if (m_seekForward == isForward) {
        return;
    }
    if (m_seekForward) {
        EndSeek();
        return;
    }
    m_seekForward = isForward;
    m_context.Say(isForward ? "Seeking forward" : "Seeking back");
    SendSeek(isForward, true);
}

void NowPlaying::EndSeek() {
    if (m_seekForward) {
        SendSeek(*std::exchange(m_seekForward, std::nullopt), false);
    }
}

void NowPlaying::SendSeek(bool isForward, bool isOn) {
    Ask(isForward ? "fastForwardSong" : "rewindSong", Params("enable", isOn), "seek", "enabled",
        [this, isOn](bool isDone) {
            if (!isDone && isOn) {
                m_seekForward.reset();
                m_context.Refuse("The player refused to seek");
            } else if (!isOn) {
                m_context.notice = {};
            }
        });
}

void NowPlaying::ToggleShuffle() {
    const bool wanted = !m_shuffle.value_or(false);
    m_context.Say(wanted ? "Shuffle on" : "Shuffle off");
    Ask("enableShuffle", Params("enable", wanted), "change shuffle", "enabled", [this, wanted](bool isOn) {
        m_shuffle = isOn;
        if (isOn != wanted) {
            m_context.Refuse(isOn ? "The player keeps shuffle on" : "The player keeps shuffle off");
        }
    });
}

void NowPlaying::NextRepeat() {
    const Repeat wanted = m_repeat == Repeat::Off   ? Repeat::One
                          : m_repeat == Repeat::One ? Repeat::All
                                                    : Repeat::Off;
    m_context.Say(std::string("Repeat ") + (wanted == Repeat::One ? "one" : Word(wanted)));
    m_context.Ask("setRepeatMode", Params("mode", Word(wanted)), [this, wanted](const Reply& reply) {
        TakeRepeat(reply);
        if (m_repeat != wanted) {
            m_context.Refuse("The player keeps its repeat mode" + Why(reply));
        }
    });
}

void NowPlaying::ToggleStream() {
    const bool isStop = m_stream.value_or(false);
    m_context.Say(isStop ? "Ending the sound" : "Starting the sound");
    m_context.Ask(isStop ? "stop" : "start", {}, [this, isStop](const Reply& reply) {
        if (!reply.result.isString()) {
            m_context.Refuse("The service could not change the sound" + Why(reply));
            return;
        }
        // Refused: somebody else has done it.
        m_stream = !isStop;
        if (reply.result != "success") {
            m_context.Refuse(isStop ? "The sound was off already" : "The sound was on already");
        } else {
            m_context.Say(isStop ? "The sound is off" : "The sound is on");
        }
    });
}

}  // namespace IpodControl::PlayerView
