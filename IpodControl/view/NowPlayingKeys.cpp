// What the keys do to what plays: the status line says it at once, the answer confirms or takes it back.
#include <functional>
#include <utility>

#include "IpodControl/view/NowPlaying.h"

namespace IpodControl::PlayerView {

namespace {

/// Longer than the pause of a held key before it repeats.
constexpr std::chrono::milliseconds kHold(700);

std::string Why(const Reply& reply) {
    return reply.error ? ": " + reply.error->message : std::string();
}

}  // namespace

void NowPlaying::Ask(const char* method, Json::Value params, const char* what, const char* flag,
                     std::function<void(bool)> took) {
    m_context.Ask({method, std::move(params)}, [=, this, took = std::move(took)](const Reply& reply) {
        const auto value = FlagMember(reply.result, flag);
        if (!value) {
            m_context.Refuse(std::string("The service could not ") + what + Why(reply));
            return;
        }
        took(*value);
    });
}

void NowPlaying::Order(const char* method, const char* what, const std::function<void()>& done) {
    Ask(method, {}, what, "success", [this, what, done](bool isDone) {
        if (isDone) {
            done();
        } else {
            m_context.Refuse(std::string("The player refused to ") + what);
        }
    });
}

void NowPlaying::PlayPause() {
    const bool isPlaying = m_known.state == PlayState::Playing;
    m_context.Say(isPlaying ? "Pausing" : "Starting to play");
    Order("playPause", isPlaying ? "pause" : "play", [this, isPlaying] {
        SetState(isPlaying ? PlayState::Paused : PlayState::Playing);
        m_context.notice = {};
    });
}

void NowPlaying::Skip(bool isForward) {
    m_context.Say(isForward ? "Next track" : "Previous track");
    Order(isForward ? "next" : "previous", "change the track", [] {});
}

void NowPlaying::Seek(bool isForward) {
    m_seekEnd = m_context.now + kHold;
    if (m_known.seeksForward == isForward) {
        return;
    }
    if (m_known.seeksForward) {
        EndSeek();
        return;
    }
    m_known.seeksForward = isForward;
    m_context.Say(isForward ? "Seeking forward" : "Seeking back");
    SendSeek(isForward, true);
}

void NowPlaying::EndSeek() {
    if (m_known.seeksForward) {
        SendSeek(*std::exchange(m_known.seeksForward, std::nullopt), false);
    }
}

void NowPlaying::SendSeek(bool isForward, bool isOn) {
    Ask(isForward ? "fastForwardSong" : "rewindSong", Params("enable", isOn), "seek", "enabled",
        [this, isOn](bool isDone) {
            if (!isDone && isOn) {
                m_known.seeksForward.reset();
                m_context.Refuse("The player refused to seek");
            } else if (!isOn) {
                m_context.notice = {};
            }
        });
}

void NowPlaying::ToggleShuffle() {
    const bool wanted = !m_known.shuffle.value_or(false);
    m_context.Say(wanted ? "Shuffle on" : "Shuffle off");
    Ask("enableShuffle", Params("enable", wanted), "change shuffle", "enabled", [this, wanted](bool isOn) {
        m_known.shuffle = isOn;
        if (isOn != wanted) {
            m_context.Refuse(isOn ? "The player keeps shuffle on" : "The player keeps shuffle off");
        }
    });
}

void NowPlaying::NextRepeat() {
    const char* const wanted = m_known.repeat == "off"       ? "current"
                               : m_known.repeat == "current" ? "all"
                                                             : "off";
    m_context.Say(std::string("Repeat ") + (m_known.repeat == "off" ? "one" : wanted));
    m_context.Ask({"setRepeatMode", Params("mode", wanted)}, [this, wanted](const Reply& reply) {
        TakeRepeat(reply);
        if (m_known.repeat != wanted) {
            m_context.Refuse("The player keeps its repeat mode" + Why(reply));
        }
    });
}

void NowPlaying::ToggleStream() {
    const bool isStop = m_known.stream.value_or(false);
    m_context.Say(isStop ? "Ending the sound" : "Starting the sound");
    m_context.Ask({isStop ? "stop" : "start"}, [this, isStop](const Reply& reply) {
        if (!reply.result.isString()) {
            m_context.Refuse("The service could not change the sound" + Why(reply));
            return;
        }
        // Refused: somebody else has done it.
        m_known.stream = !isStop;
        if (reply.result != "success") {
            m_context.Refuse(isStop ? "The sound was off already" : "The sound was on already");
        } else {
            m_context.Say(isStop ? "The sound is off" : "The sound is on");
        }
    });
}

}  // namespace IpodControl::PlayerView
