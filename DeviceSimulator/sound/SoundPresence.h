// How the simulated sound card is: as good as new, gone, or as a unit's is when the player's audio falters.
// It looks into the folder that DEVICE_SIMULATOR_AUDIO names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace DeviceSimulator {

constexpr std::int32_t kMostDriftPpm = 100000;

struct SoundPresence {
    bool hasCapture = true;       ///< the player's audio
    bool hasPlayback = true;      ///< the unit's output
    std::int32_t driftPpm = 0;    ///< how much too fast the player's clock runs, from the next start on
    std::uint32_t refusedHz = 0;  ///< the rate that the unit's output does not take when opened; 0: none
};

/// None without the folder. Any thread.
std::optional<SoundPresence> ReadSoundPresence();

/// Makes them so; whoever has one open that vanishes meets it at the next read or write. Returns what was
/// wrong; empty when nothing was. Any thread.
std::string SetSoundPresence(const SoundPresence& presence);

/// Lets the player's audio, or else the unit's output, run over once: at once where it runs, else when it
/// does. Returns as SetSoundPresence.
std::string CauseXrun(bool isCapture);

/// The one sample rate, in Hz, that the capture device offers from now on. Returns as SetSoundPresence.
std::string SetCaptureRate(std::uint32_t rate);

}  // namespace DeviceSimulator
