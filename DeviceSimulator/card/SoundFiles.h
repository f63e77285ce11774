// The files that stand for a sound card: what the player sends, what was played, and whether the card is
// there. They lie in the folder that DEVICE_SIMULATOR_AUDIO names when a device is opened; without it the
// player sends silence and what is played goes nowhere.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

constexpr std::uint32_t kSoundChannels = 2;
constexpr std::size_t kFrameBytes = kSoundChannels * 2;  ///< 16 bits a sample

/// A path in the folder of the sound files, empty without such a folder.
std::string SoundFilePath(const char* name);

bool SoundFileExists(const std::string& path);

/// The whole number in a file, within its bounds; else `otherwise`.
long ReadSoundNumber(const std::string& path, long lowest, long highest, long otherwise);

/// The one rate that the player sends at, from "capture.rate": 44,100 Hz when that file says nothing
/// sensible.
std::uint32_t ReadCaptureRate();

/// "capture.pcm", a file or a FIFO of S16LE stereo frames; where there is none, "capture-<rate>.pcm", into
/// which the simulated player writes only what has that rate.
class CaptureFile {
  public:
    explicit CaptureFile(std::uint32_t rate);

    /// Fills `frames` frames: with what there is to read now, then with silence. Never blocks.
    void Read(void* into, std::size_t frames);

  private:
    void Open();
    std::size_t ReadBytes(char* into, std::size_t size);

    std::string m_path;
    std::string m_pathOfRate;
    Descriptor m_file;
    std::array<char, kFrameBytes> m_partial{};  ///< of a frame whose rest has not come yet
    std::size_t m_partialSize = 0;
};

/// "playback.wav": what has been played since the device was last set up.
class PlaybackFile {
  public:
    PlaybackFile();
    ~PlaybackFile();
    PlaybackFile(const PlaybackFile&) = delete;
    PlaybackFile& operator=(const PlaybackFile&) = delete;

    /// Starts the file over. `rate` in Hz.
    void Begin(std::uint32_t rate);
    /// What cannot be written is lost, as it is to a loudspeaker.
    void Write(const void* from, std::size_t frames);

  private:
    void StartOver();
    void WriteHeader();

    std::string m_path;
    Descriptor m_file;
    std::uint32_t m_rate = 0;
    std::uint32_t m_dataBytes = 0;
};

}  // namespace DeviceSimulator
