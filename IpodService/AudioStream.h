// The service's audio stream: at most one streamer, replaced as a whole at every restart.
#pragma once

#include <memory>

#include "DeviceManager/DeviceManager.h"
#include "ServiceUtil/Mutex.h"

class GstreamerStreamer;

/// One operation at a time, whichever thread it comes from. The lock is never held across a device-manager
/// call or a notification. Any thread.
class AudioStream {
  public:
    /// In place of a sample rate.
    static constexpr i32 kElementsChooseRate = -1;

    AudioStream();
    /// Stops the stream, with Stop's log entry.
    ~AudioStream();
    AudioStream(const AudioStream&) = delete;
    AudioStream& operator=(const AudioStream&) = delete;

    /// 1 started, 0 a stream exists already, be it broken.
    i32 Start() EXCLUDES(m_mutex);
    /// 1 stopped, 0 there was none.
    i32 Stop() EXCLUDES(m_mutex);
    /// 1 restarted, 0 there was none to restart. `sampleRate` in Hz; 0 or less leaves it to the elements.
    i32 Restart(i32 sampleRate) EXCLUDES(m_mutex);

  private:
    void StartNew(i32 sampleRate) REQUIRES(m_mutex);

    Mutex m_mutex;
    std::unique_ptr<GstreamerStreamer> m_streamer GUARDED_BY(m_mutex);
};
