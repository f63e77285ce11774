#include "DeviceSimulator/Player.h"

#include <algorithm>
#include <utility>

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;

constexpr int kSeekSpeed = 8;
constexpr auto kTick = 1s;
/// Further in than this, "previous" goes back to the track's own start.
constexpr auto kRestartAfter = 3s;
/// A file whose length is not known still takes time to play.
constexpr std::uint32_t kShortestTrackMs = 1000;

std::uint32_t ToMs(std::chrono::nanoseconds time) {
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

}  // namespace

void Player::Start(std::shared_ptr<const Library> library, std::shared_ptr<const ItemList> tracks,
                   std::uint32_t start, TimePoint now) {
    Advance(now);
    EndSeek(now);
    m_queue.Fill(std::move(library), std::move(tracks), start);
    Tell(kPlayContext, m_queue.Count());
    BeginPlaying(m_queue.Position(), now);
}

Result Player::Select(std::uint32_t index, TimePoint now) {
    Advance(now);
    if (index >= m_queue.Count()) {
        return kInvalidIndex;
    }
    EndSeek(now);
    BeginPlaying(index, now);
    return kSuccess;
}

Result Player::Play(TimePoint now) {
    Advance(now);
    if (m_queue.IsEmpty()) {
        return kInStopState;
    }
    EndSeek(now);
    if (m_state == PlayState::Stopped) {
        BeginPlaying(m_queue.Position(), now);
    } else if (m_state == PlayState::Paused) {
        SetState(PlayState::Playing, now);
        Tell(kPlayStarted);
    }
    return kSuccess;
}

Result Player::Pause(TimePoint now) {
    Advance(now);
    if (m_state == PlayState::Stopped) {
        return kInStopState;
    }
    EndSeek(now);
    if (m_state == PlayState::Playing) {
        SetState(PlayState::Paused, now);
        Tell(kPlayPaused);
    }
    return kSuccess;
}

void Player::Stop(TimePoint now) {
    Advance(now);
    if (m_state != PlayState::Stopped) {
        EndSeek(now);
        Halt(now);
    }
}

Result Player::Skip(SkipDirection direction, TimePoint now) {
    Advance(now);
    if (m_state == PlayState::Stopped) {
        return kInStopState;
    }
    EndSeek(now);
    m_passedOver = 0;
    const std::uint32_t last = m_queue.Count() - 1;
    const std::uint32_t position = m_queue.Position();
    const bool wraps = m_repeat != RepeatMode::None;
    if (direction == SkipDirection::Next) {
        if (position == last && !wraps) {
            m_queue.SetPosition(0);
            Halt(now);
        } else {
            BeginTrack(position == last ? 0 : position + 1, now);
        }
    } else if (PositionAt(now) > kRestartAfter || (position == 0 && !wraps)) {
        MoveTo(0ns, now);
        Tell(kPlayTime, 0);
    } else {
        BeginTrack(position == 0 ? last : position - 1, now);
    }
    return kSuccess;
}

Result Player::StartSeek(SeekDirection direction, TimePoint now) {
    Advance(now);
    if (m_state == PlayState::Stopped) {
        return kInStopState;
    }
    const bool isForward = direction == SeekDirection::Forward;
    const PlayState wanted = isForward ? PlayState::FastForward : PlayState::Rewind;
    if (m_state == wanted) {
        return kSuccess;
    }
    if (!IsSeeking()) {
        m_beforeSeek = m_state;
    }
    SetState(wanted, now);
    Tell(isForward ? kFastForwardStarted : kRewindStarted);
    return kSuccess;
}

void Player::EndSeek(TimePoint now) {
    Advance(now);
    if (IsSeeking()) {
        SetState(m_beforeSeek, now);
        Tell(kSeekStopped);
    }
}

Result Player::MoveWithin(std::chrono::milliseconds position, TimePoint now) {
    Advance(now);
    if (m_state == PlayState::Stopped) {
        return kInStopState;
    }
    if (position > Duration()) {
        return kInvalidIndex;
    }
    EndSeek(now);
    MoveTo(position, now);
    Tell(kPlayTime, ElapsedMs(now));
    return kSuccess;
}

void Player::PassOver(TimePoint now) {
    Advance(now);
    if (m_state == PlayState::Stopped) {
        return;
    }
    EndSeek(now);
    if (++m_passedOver < m_queue.Count()) {
        MoveOn(m_repeat != RepeatMode::None, now);
    } else {
        m_queue.SetPosition(0);
        Halt(now);
    }
}

void Player::SetShuffle(ShuffleMode mode, TimePoint now) {
    Advance(now);
    if (m_queue.Shuffle() == mode) {
        return;
    }
    m_queue.SetShuffle(mode);
    Tell(kShuffleSetting, static_cast<std::uint32_t>(mode));
    if (!m_queue.IsEmpty()) {
        // The current track now stands elsewhere in the list.
        Tell(kPlayContext, m_queue.Count());
    }
}

void Player::SetRepeat(RepeatMode mode) {
    if (m_repeat != mode) {
        m_repeat = mode;
        Tell(kRepeatSetting, static_cast<std::uint32_t>(mode));
    }
}

void Player::Rest(TimePoint now) {
    Advance(now);
    if (m_state != PlayState::Stopped) {
        SetState(PlayState::Paused, now);
    }
    m_toldSampleRate = 0;
    m_events.clear();
}

void Player::Advance(TimePoint now) {
    for (auto due = NextDue(); due && *due <= now; due = NextDue()) {
        if (EndsAt() <= m_nextTick) {
            ReachEnd(*due);
        } else {
            Tell(kPlayTime, ElapsedMs(*due));
            m_nextTick += kTick;
        }
    }
}

std::optional<TimePoint> Player::NextDue() const {
    if (Speed() == 0) {
        return std::nullopt;
    }
    return std::min(EndsAt(), m_nextTick);
}

std::vector<PlayerEvent> Player::TakeEvents() {
    return std::exchange(m_events, {});
}

std::uint32_t Player::ElapsedMs(TimePoint now) const {
    return ToMs(PositionAt(now));
}

std::uint32_t Player::TotalMs() const {
    return ToMs(Duration());
}

Sound Player::CurrentSound() const {
    if (m_state == PlayState::Stopped) {
        return {};
    }
    const TrackInfo info = m_queue.InfoAt(m_queue.Position());
    return {info.file, info.sampleRate, m_tracksBegun, m_position, m_since, m_state == PlayState::Playing};
}

int Player::Speed() const {
    switch (m_state) {
        case PlayState::Playing:
            return 1;
        case PlayState::FastForward:
            return kSeekSpeed;
        case PlayState::Rewind:
            return -kSeekSpeed;
        case PlayState::Paused:
        case PlayState::Stopped:
            break;
    }
    return 0;
}

Player::Nanoseconds Player::Duration() const {
    if (m_queue.IsEmpty()) {
        return 0ns;
    }
    return std::chrono::milliseconds{
        std::max(m_queue.InfoAt(m_queue.Position()).durationMs, kShortestTrackMs)};
}

Player::Nanoseconds Player::PositionAt(TimePoint now) const {
    return std::clamp<Nanoseconds>(m_position + (now - m_since) * Speed(), 0ns, Duration());
}

/// When the current track's end, or its start when rewinding, is reached; asked for only while it moves.
TimePoint Player::EndsAt() const {
    const int speed = Speed();
    const Nanoseconds left = speed > 0 ? Duration() - m_position : m_position;
    // Rounded up, so that the end has been reached when its time has come.
    const int factor = speed > 0 ? speed : -speed;
    return m_since + (left + Nanoseconds{factor - 1}) / factor;
}

void Player::MoveTo(Nanoseconds position, TimePoint now) {
    m_position = position;
    m_since = now;
    ++m_soundChanges;
    m_nextTick = now + kTick - (IsSeeking() ? 0ns : position % kTick);
}

void Player::SetState(PlayState state, TimePoint now) {
    const Nanoseconds position = PositionAt(now);
    m_state = state;
    MoveTo(position, now);
}

void Player::BeginTrack(std::uint32_t position, TimePoint now) {
    m_queue.SetPosition(position);
    m_trackBegan = now;
    ++m_tracksBegun;
    MoveTo(0ns, now);
    Tell(kTrackChanged);
    const std::uint32_t rate = m_queue.InfoAt(position).sampleRate;
    if (std::exchange(m_toldSampleRate, rate) != rate) {
        Tell(kSampleRate, rate);
    }
}

void Player::BeginPlaying(std::uint32_t position, TimePoint now) {
    const bool wasPlaying = m_state == PlayState::Playing;
    m_passedOver = 0;
    SetState(PlayState::Playing, now);
    BeginTrack(position, now);
    if (!wasPlaying) {
        Tell(kPlayStarted);
    }
}

void Player::ReachEnd(TimePoint now) {
    if (m_state == PlayState::Rewind) {
        SetState(m_beforeSeek, now);
        Tell(kSeekStopped);
        return;
    }
    m_passedOver = 0;
    if (m_repeat == RepeatMode::One) {
        BeginTrack(m_queue.Position(), now);
    } else {
        MoveOn(m_repeat == RepeatMode::All, now);
    }
}

void Player::MoveOn(bool isRepeated, TimePoint now) {
    const std::uint32_t next = m_queue.Position() + 1;
    if (next < m_queue.Count() || isRepeated) {
        BeginTrack(next < m_queue.Count() ? next : 0, now);
    } else {
        if (IsSeeking()) {
            Tell(kSeekStopped);
        }
        m_queue.SetPosition(0);
        Halt(now);
    }
}

void Player::Halt(TimePoint now) {
    m_state = PlayState::Stopped;
    MoveTo(0ns, now);
    Tell(kPlayStopped);
}

}  // namespace DeviceSimulator
