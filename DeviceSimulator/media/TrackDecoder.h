// One music file as sound, with GStreamer.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "DeviceSimulator/media/GstreamerOwned.h"

namespace DeviceSimulator {

/// A frame of S16LE stereo sound as it lies in memory.
using SoundFrame = std::uint32_t;

/// Decodes ahead on threads of GStreamer's, as far as a small queue takes it; no member waits for them.
/// Frames are counted from the track's start. One thread. GStreamer has been initialised.
class TrackDecoder {
  public:
    /// `file`: a path in any bytes. `rate`: Hz, that the sound is converted to.
    TrackDecoder(std::string file, std::uint32_t rate);

    /// Readable while there is something for HandleMessages.
    int MessageFd() const;
    void HandleMessages();
    /// Why nothing of the file can be decoded; empty as long as that is not known.
    const std::string& Failure() const { return m_failure; }

    /// What is wanted next begins at `frame`.
    void GoTo(std::int64_t frame);
    /// Up to `most` frames from `from` on; fewer, or none, where they are not decoded yet or the file ends.
    /// What lies before `from` is forgotten. Valid until the next call.
    std::span<const SoundFrame> Frames(std::int64_t from, std::size_t most);

  private:
    using Clock = std::chrono::steady_clock;

    void Build();
    void Handle(GstMessage* message);
    void Fail(std::string reason);
    void FailIfSilent(std::string reason);
    void ExpectFrom(std::int64_t frame);
    void Seek(std::int64_t frame);
    bool Pull();
    Owned<GstSample> Take(const char* signal) const;

    const std::string m_file;
    const std::uint32_t m_rate;
    const Clock::time_point m_began = Clock::now();
    Owned<GstElement> m_pipeline;
    GstElement* m_sink = nullptr;  // the pipeline's
    Owned<GstBus> m_bus;
    std::string m_failure;
    bool m_isReady = false;   // it can seek
    bool m_isBroken = false;  // it has failed, and plays to where it came
    bool m_hasSound = false;  // something has been decoded
    std::optional<std::int64_t> m_seekLater;
    std::vector<SoundFrame> m_frames;     // decoded, without a gap
    std::optional<std::int64_t> m_first;  // of m_frames; none before the first after a seek has come
    std::int64_t m_expected = 0;          // what m_first will be, about
};

}  // namespace DeviceSimulator
