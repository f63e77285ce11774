// What is asked of the server thread, by whichever thread, to be done in one of its next passes.
#pragma once

#include <atomic>

#include "DeviceManager/DeviceManager.h"
#include "ServiceUtil/ThreadRole.h"

/// Flags and a deadline. A flag is cleared as it is taken, before it is acted on, so that what is asked for
/// meanwhile is done in the pass after.
class PendingWork {
  public:
    // Any thread

    /// The server loop ends after its pass. True for the first request.
    bool RequestExit() { return !m_exitRequested.exchange(true); }
    bool IsExitRequested() const { return m_exitRequested; }
    /// The device that is open has gone.
    void RequestClose() { m_closePending = true; }
    /// A track info is to be sent.
    void RequestPlayStatus() { m_playStatusPending = true; }
    /// A track info is to be sent once the time is past `deadlineMs`, in place of an earlier such request.
    /// Milliseconds of NowMs; 0 for none.
    void RequestPlayStatusAt(u32 deadlineMs) { m_playStatusDeadlineMs = deadlineMs; }
    /// A picture is to be fetched and sent.
    void RequestAlbumArt() { m_albumArtPending = true; }

    // Server thread

    /// Whether a track info is due at `nowMs`.
    bool TakePlayStatus(u32 nowMs) REQUIRES(kServerThread);
    /// Waits for a track info that is due.
    bool TakeTrackTime() REQUIRES(kServerThread);
    bool TakeStreamRestart() REQUIRES(kServerThread) { return m_streamRestartPending.exchange(false); }
    bool TakeClose() REQUIRES(kServerThread) { return m_closePending.exchange(false); }
    /// Whether a picture is to be fetched. A track info that is due goes out first: the picture belongs to
    /// what it announces.
    bool IsAlbumArtDue() const REQUIRES(kServerThread) { return m_albumArtPending && !m_playStatusPending; }
    /// The picture has been sent, will not come, or is not wanted any more.
    void DropAlbumArt() REQUIRES(kServerThread) { m_albumArtPending = false; }

  private:
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
