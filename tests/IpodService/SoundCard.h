// The simulated sound card as a test handles it.
#pragma once

#include <glib.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

/// Looks until `holds` or the time is up, which is long enough for a sanitizer on a busy machine.
bool WaitFor(const std::function<bool()>& holds, std::chrono::seconds limit = std::chrono::seconds(30));

/// The default main context, run by a thread of its own.
class MainLoopThread {
  public:
    MainLoopThread();
    ~MainLoopThread();
    MainLoopThread(const MainLoopThread&) = delete;
    MainLoopThread& operator=(const MainLoopThread&) = delete;

  private:
    GMainLoop* m_loop;
    std::thread m_thread;
};

/// What was played, as far as the card has it.
struct PlayedSound {
    std::uint32_t rate = 0;             ///< Hz
    std::vector<std::int16_t> samples;  ///< of the left channel

    double Seconds() const;
    /// Without the first `seconds`.
    PlayedSound After(double seconds) const;
    /// In Hz, by the upward crossings of zero.
    double Pitch() const;
    /// The longest time, in seconds, without a sound.
    double LongestSilence() const;
};

/// Makes `folder` the place of the sound card's files and the simulated card the one that ALSA finds.
class SoundCard {
  public:
    explicit SoundCard(const std::filesystem::path& folder);

    /// From the next opening on the card delivers `seconds` of a tone of 1 kHz at `rate`.
    void PlayTone(std::uint32_t rate, int seconds) const;
    /// The same through a FIFO, written by the thread that is returned.
    std::thread PlayToneThroughFifo(std::uint32_t rate, int seconds) const;
    void SetCaptureGone(bool gone) const { SetPresent("capture.gone", gone); }
    void SetPlaybackGone(bool gone) const { SetPresent("playback.gone", gone); }
    PlayedSound Played() const;
    bool WaitForSound(std::uint32_t rate, double seconds) const;

  private:
    void SetRate(std::uint32_t rate) const;
    void SetPresent(const char* name, bool present) const;

    std::filesystem::path m_folder;
};
