#include "DeviceSimulator/device/Player.h"

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

}  // namespace

void Player::Start(std::shared_ptr<const Library> library, std::shared_ptr<const ItemList> tracks,
                   std::uint32_t start, TimePoint now) {
    EndSeek(now);
    m_queue.Fill(std::move(library), std::move(tracks), start);
    Tell(DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, m_queue.Count());
    BeginPlaying(m_queue.Position(), now);
}

DevMgrResult Player::Select(std::uint32_t index, TimePoint now) {
    Advance(now);
    if (index >= m_queue.Count()) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    EndSeek(now);
    BeginPlaying(index, now);
    return DEV_MGR_SUCCESS;
}

DevMgrResult Player::Play(TimePoint now) {
    EndSeek(now);
    if (m_queue.IsEmpty()) {
        return DEV_MGR_IAP_IPOD_IN_STOP_STATE;
    }
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        BeginPlaying(m_queue.Position(), now);
    } else if (m_state == E_DEVMGR_IPOD_PLAY_PAUSED) {
        SetState(E_DEVMGR_IPOD_PLAY_PLAYING, now);
        Tell(DEV_MGR_EVENT_PLAY_STARTED);
    }
    return DEV_MGR_SUCCESS;
}

DevMgrResult Player::Pause(TimePoint now) {
    EndSeek(now);
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_IPOD_IN_STOP_STATE;
    }
    if (m_state == E_DEVMGR_IPOD_PLAY_PLAYING) {
        SetState(E_DEVMGR_IPOD_PLAY_PAUSED, now);
        Tell(DEV_MGR_EVENT_PLAY_PAUSED);
    }
    return DEV_MGR_SUCCESS;
}

void Player::Stop(TimePoint now) {
    EndSeek(now);
    if (m_state != E_DEVMGR_IPOD_PLAY_STOPPED) {
        Halt(now);
    }
}

DevMgrResult Player::Skip(DevMgrSkip direction, TimePoint now) {
    EndSeek(now);
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_IPOD_IN_STOP_STATE;
    }
    m_passedOver = 0;
    const std::uint32_t position = m_queue.Position();
    const bool isRepeated = m_repeat != E_DEVMGR_IPOD_REPEAT_NONE;
    if (direction == DEV_MGR_SKIP_NEXT) {
        MoveOn(isRepeated, now);
    } else if (PositionAt(now) > kRestartAfter || (position == 0 && !isRepeated)) {
        MoveTo(0ns, now);
        Tell(DEV_MGR_EVENT_PLAY_TIME, 0);
    } else {
        BeginTrack((position == 0 ? m_queue.Count() : position) - 1, now);
    }
    return DEV_MGR_SUCCESS;
}

DevMgrResult Player::StartSeek(DevMgrSeek direction, TimePoint now) {
    Advance(now);
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_IPOD_IN_STOP_STATE;
    }
    const bool isForward = direction == DEV_MGR_SEEK_FORWARD;
    const DevMgrPlayState wanted =
        isForward ? E_DEVMGR_IPOD_PLAY_FAST_FORWARD : E_DEVMGR_IPOD_PLAY_FAST_REWIND;
    if (m_state == wanted) {
        return DEV_MGR_SUCCESS;
    }
    if (!IsSeeking()) {
        m_beforeSeek = m_state;
    }
    SetState(wanted, now);
    Tell(isForward ? DEV_MGR_EVENT_FAST_FW_STARTED : DEV_MGR_EVENT_FAST_RW_STARTED);
    return DEV_MGR_SUCCESS;
}

void Player::EndSeek(TimePoint now) {
    Advance(now);
    if (IsSeeking()) {
        SetState(m_beforeSeek, now);
        Tell(DEV_MGR_EVENT_FAST_FW_RW_STOPPED);
    }
}

DevMgrResult Player::MoveWithin(std::chrono::milliseconds position, TimePoint now) {
    Advance(now);
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_IPOD_IN_STOP_STATE;
    }
    if (position > Duration()) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    EndSeek(now);
    MoveTo(position, now);
    Tell(DEV_MGR_EVENT_PLAY_TIME, ElapsedMs(now));
    return DEV_MGR_SUCCESS;
}

void Player::PassOver(TimePoint now) {
    EndSeek(now);
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return;
    }
    if (++m_passedOver < m_queue.Count()) {
        MoveOn(m_repeat != E_DEVMGR_IPOD_REPEAT_NONE, now);
    } else {
        m_queue.SetPosition(0);
        Halt(now);
    }
}

void Player::SetShuffle(DevMgrShuffleMode mode, TimePoint now) {
    Advance(now);
    if (m_queue.Shuffle() == mode) {
        return;
    }
    m_queue.SetShuffle(mode);
    Tell(DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING, static_cast<std::uint32_t>(mode));
    if (!m_queue.IsEmpty()) {
        // The current track now stands elsewhere in the list.
        Tell(DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING, m_queue.Count());
    }
}

void Player::SetRepeat(DevMgrRepeatMode mode) {
    if (m_repeat != mode) {
        m_repeat = mode;
        Tell(DEV_MGR_EVENT_IPOD_REPEAT_SETTING, static_cast<std::uint32_t>(mode));
    }
}

void Player::Rest(TimePoint now) {
    Advance(now);
    if (m_state != E_DEVMGR_IPOD_PLAY_STOPPED) {
        SetState(E_DEVMGR_IPOD_PLAY_PAUSED, now);
    }
    m_toldSampleRate = 0;
    m_events.clear();
}

void Player::Advance(TimePoint now) {
    for (auto due = NextDue(); due && *due <= now; due = NextDue()) {
        if (EndsAt() <= m_nextTick) {
            ReachEnd(*due);
        } else {
            Tell(DEV_MGR_EVENT_PLAY_TIME, ElapsedMs(*due));
            m_nextTick += kTick;
        }
    }
}

std::optional<TimePoint> Player::NextDue() const {
    return Speed() != 0 ? std::optional(std::min(EndsAt(), m_nextTick)) : std::nullopt;
}

Sound Player::CurrentSound() const {
    if (m_state == E_DEVMGR_IPOD_PLAY_STOPPED) {
        return {};
    }
    const TrackInfo info = m_queue.InfoAt(m_queue.Position());
    return {info.file,  info.sampleRate, m_tracksBegun,
            m_position, m_since,         m_state == E_DEVMGR_IPOD_PLAY_PLAYING};
}

int Player::Speed() const {
    if (IsSeeking()) {
        return m_state == E_DEVMGR_IPOD_PLAY_FAST_FORWARD ? kSeekSpeed : -kSeekSpeed;
    }
    return m_state == E_DEVMGR_IPOD_PLAY_PLAYING ? 1 : 0;
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

void Player::SetState(DevMgrPlayState state, TimePoint now) {
    const Nanoseconds position = PositionAt(now);
    m_state = state;
    MoveTo(position, now);
}

void Player::BeginTrack(std::uint32_t position, TimePoint now) {
    m_queue.SetPosition(position);
    m_trackBegan = now;
    ++m_tracksBegun;
    MoveTo(0ns, now);
    Tell(DEV_MGR_EVENT_PLAY_TRACK_CHANGED);
    const std::uint32_t rate = m_queue.InfoAt(position).sampleRate;
    if (std::exchange(m_toldSampleRate, rate) != rate) {
        Tell(DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, rate);
    }
}

void Player::BeginPlaying(std::uint32_t position, TimePoint now) {
    const bool wasPlaying = m_state == E_DEVMGR_IPOD_PLAY_PLAYING;
    m_passedOver = 0;
    SetState(E_DEVMGR_IPOD_PLAY_PLAYING, now);
    BeginTrack(position, now);
    if (!wasPlaying) {
        Tell(DEV_MGR_EVENT_PLAY_STARTED);
    }
}

void Player::ReachEnd(TimePoint now) {
    if (m_state == E_DEVMGR_IPOD_PLAY_FAST_REWIND) {
        SetState(m_beforeSeek, now);
        Tell(DEV_MGR_EVENT_FAST_FW_RW_STOPPED);
        return;
    }
    m_passedOver = 0;
    if (m_repeat == E_DEVMGR_IPOD_REPEAT_ONE) {
        BeginTrack(m_queue.Position(), now);
    } else {
        MoveOn(m_repeat == E_DEVMGR_IPOD_REPEAT_ALL, now);
    }
}

void Player::MoveOn(bool isRepeated, TimePoint now) {
    const std::uint32_t next = m_queue.Position() + 1;
    if (next < m_queue.Count() || isRepeated) {
        BeginTrack(next < m_queue.Count() ? next : 0, now);
    } else {
        if (IsSeeking()) {
            Tell(DEV_MGR_EVENT_FAST_FW_RW_STOPPED);
        }
        m_queue.SetPosition(0);
        Halt(now);
    }
}

void Player::Halt(TimePoint now) {
    m_state = E_DEVMGR_IPOD_PLAY_STOPPED;
    MoveTo(0ns, now);
    Tell(DEV_MGR_EVENT_PLAY_STOPPED);
}

}  // namespace DeviceSimulator
