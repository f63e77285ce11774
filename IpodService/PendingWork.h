// What is asked of the server thread, by whichever thread, to be done in one of its next passes.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "DeviceManager/DeviceManager.h"
#include "ServiceUtil/Mutex.h"
#include "ServiceUtil/ThreadRole.h"

/// Flags and a deadline. A flag is cleared as it is taken, before it is acted on, so that what is asked for
/// meanwhile is done in the pass after.
class PendingWork {
  public:
    /// `wake` makes the server loop look at once; it is called with every request, on the thread that makes
    /// it. May be empty.
    explicit PendingWork(std::function<void()> wake) : m_wake(std::move(wake)) {}

    // Any thread

    /// The server loop ends after its pass. True for the first request.
    bool RequestExit() EXCLUDES(m_exitMutex);
    bool IsExitRequested() const { return m_exitRequested; }
    /// Returns after `pause`, or as soon as the exit is requested; true when it is.
    bool WaitForExit(std::chrono::milliseconds pause) EXCLUDES(m_exitMutex);
    /// The device that is open has gone.
    void RequestClose() { Request(m_closePending); }
    /// A track info is to be sent.
    void RequestPlayStatus() { Request(m_playStatusPending); }
    /// A track info is to be sent once the time is past `deadlineMs`, in place of an earlier such request.
    /// Milliseconds of NowMs; 0 for none.
    void RequestPlayStatusAt(u32 deadlineMs);
    /// A picture is to be fetched and sent.
    void RequestAlbumArt() { Request(m_albumArtPending); }
    /// The server loop is to look at what has changed elsewhere.
    void Wake() const;

    // Server thread

    /// Tells the time that the deadline is kept in. Every pass asks: it is called where a deadline is set.
    using ClockMs = std::function<u32()>;

    /// Whether a track info is due.
    bool TakePlayStatus(const ClockMs& now) REQUIRES(kServerThread);
    /// How long it is until a track info is due; none when no time is set for one.
    std::optional<u32> TimeToPlayStatus(const ClockMs& now) const REQUIRES(kServerThread);
    /// Waits for a track info that is due.
    bool TakeTrackTime() REQUIRES(kServerThread);
    bool TakeStreamRestart() REQUIRES(kServerThread) { return Take(m_streamRestartPending); }
    bool TakeClose() REQUIRES(kServerThread) { return Take(m_closePending); }
    /// Whether a picture is to be fetched. A track info that is due goes out first: the picture belongs to
    /// what it announces.
    bool IsAlbumArtDue() const REQUIRES(kServerThread) { return m_albumArtPending && !m_playStatusPending; }
    /// The picture has been sent, will not come, or is not wanted any more.
    void DropAlbumArt() REQUIRES(kServerThread) { m_albumArtPending = false; }

  private:
    void Request(std::atomic<bool>& flag);
    /// Every pass asks for every flag, and hardly any is set: to look costs less than to exchange.
    static bool Take(std::atomic<bool>& flag) { return flag && flag.exchange(false); }

    const std::function<void()> m_wake;
    Mutex m_exitMutex;  ///< a request is not missed by one who is about to wait for it
    Condition m_exitCondition;

    std::atomic<bool> m_exitRequested{false};
    std::atomic<bool> m_closePending{false};
    std::atomic<bool> m_playStatusPending{false};
    std::atomic<bool> m_albumArtPending{false};
    /// Wall-clock milliseconds in 32 bits, 0 for none.
    std::atomic<u32> m_playStatusDeadlineMs{0};

    // Nothing in the service sets these two: they are the deferred forms of what is done at once today.
    std::atomic<bool> m_streamRestartPending{false};
    std::atomic<bool> m_trackTimePending{false};
};
