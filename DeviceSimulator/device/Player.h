// The playing half of a device: what plays, where it stands in it, and what it tells of that.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "DeviceSimulator/device/DeviceTypes.h"
#include "DeviceSimulator/device/PlayQueue.h"
#include "DeviceSimulator/device/Sound.h"
#include "DeviceSimulator/device/Time.h"

namespace DeviceSimulator {

struct PlayerEvent {
    std::uint32_t id = 0;
    std::uint32_t value = 0;
};

/// Knows no clock: every operation is handed the time, which never runs backwards. Not locked: the model's
/// lock guards it.
class Player {
  public:
    explicit Player(std::uint32_t seed) : m_queue(seed) {}

    /// Plays `tracks`, which are not empty, from the position `start` in them.
    void Start(std::shared_ptr<const Library> library, std::shared_ptr<const ItemList> tracks,
               std::uint32_t start, TimePoint now);
    /// Plays the entry `index` of the now-playing list.
    DevMgrResult Select(std::uint32_t index, TimePoint now);

    /// Plays on, or from the start of the current track when stopped; DEV_MGR_IAP_IPOD_IN_STOP_STATE with an
    /// empty queue.
    DevMgrResult Play(TimePoint now);
    DevMgrResult Pause(TimePoint now);
    void Stop(TimePoint now);
    DevMgrResult Skip(DevMgrSkip direction, TimePoint now);
    DevMgrResult StartSeek(DevMgrSeek direction, TimePoint now);
    /// Goes on as before, if it is seeking, after all that was due up to `now`.
    void EndSeek(TimePoint now);
    /// Goes to that time of the current track; DEV_MGR_IAP_INVALID_INDEX when it is not as long.
    DevMgrResult MoveWithin(std::chrono::milliseconds position, TimePoint now);
    /// Goes on to the next track from one that cannot be played, whatever is repeated. Stops at the queue's
    /// end, and when no track of it can be.
    void PassOver(TimePoint now);

    void SetShuffle(DevMgrShuffleMode mode, TimePoint now);
    void SetRepeat(DevMgrRepeatMode mode);
    DevMgrRepeatMode Repeat() const { return m_repeat; }

    /// Stands still without telling, and tells the sample rate anew when it goes on: nobody listens.
    void Rest(TimePoint now);
    /// The next track tells its rate whether or not it is another one.
    void ForgetSampleRate() { m_toldSampleRate = 0; }

    /// Lets everything happen that is due up to `now`.
    void Advance(TimePoint now);
    /// When the next thing happens by itself; none while nothing moves.
    std::optional<TimePoint> NextDue() const;
    /// What there is to tell since the last time, in order.
    std::vector<PlayerEvent> TakeEvents() { return std::exchange(m_events, {}); }

    DevMgrPlayState State() const { return m_state; }
    const PlayQueue& Queue() const { return m_queue; }
    /// When the current track began, from its start or anew.
    TimePoint TrackBegan() const { return m_trackBegan; }
    std::uint32_t ElapsedMs(TimePoint now) const { return ToMs(PositionAt(now)); }
    std::uint32_t TotalMs() const { return ToMs(Duration()); }

    Sound CurrentSound() const;
    /// Counts up whenever CurrentSound is another one than its time going on makes it.
    std::uint64_t SoundChanges() const { return m_soundChanges; }

  private:
    using Nanoseconds = std::chrono::nanoseconds;

    static std::uint32_t ToMs(Nanoseconds time) {
        return static_cast<std::uint32_t>(time / std::chrono::milliseconds{1});
    }
    bool IsSeeking() const {
        return m_state == E_DEVMGR_IPOD_PLAY_FAST_FORWARD || m_state == E_DEVMGR_IPOD_PLAY_FAST_REWIND;
    }
    int Speed() const;
    Nanoseconds Duration() const;
    Nanoseconds PositionAt(TimePoint now) const;
    TimePoint EndsAt() const;
    void MoveTo(Nanoseconds position, TimePoint now);
    void SetState(DevMgrPlayState state, TimePoint now);
    void BeginTrack(std::uint32_t position, TimePoint now);
    void BeginPlaying(std::uint32_t position, TimePoint now);
    void ReachEnd(TimePoint now);
    void MoveOn(bool isRepeated, TimePoint now);
    void Halt(TimePoint now);
    void Tell(std::uint32_t id, std::uint32_t value = 0) { m_events.push_back({id, value}); }

    PlayQueue m_queue;
    DevMgrRepeatMode m_repeat = E_DEVMGR_IPOD_REPEAT_NONE;
    DevMgrPlayState m_state = E_DEVMGR_IPOD_PLAY_STOPPED;
    DevMgrPlayState m_beforeSeek = E_DEVMGR_IPOD_PLAY_PLAYING;
    Nanoseconds m_position{0};  // at m_since
    TimePoint m_since{};
    TimePoint m_nextTick{};
    TimePoint m_trackBegan{};
    std::uint32_t m_toldSampleRate = 0;
    std::uint64_t m_tracksBegun = 0;
    std::uint64_t m_soundChanges = 0;
    std::uint32_t m_passedOver = 0;  // one after another
    std::vector<PlayerEvent> m_events;
};

}  // namespace DeviceSimulator
