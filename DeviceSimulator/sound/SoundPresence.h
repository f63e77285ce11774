// How the simulated sound devices are: as good as new, gone, or as a unit's are when the player's audio
// falters.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace DeviceSimulator {

constexpr std::int32_t kMostDriftPpm = 100000;

struct SoundPresence {
    bool hasCapture = true;     ///< the player's audio
    bool hasPlayback = true;    ///< the unit's output
    std::int32_t driftPpm = 0;  ///< how much too fast the player's clock runs, from the next start on
    std::uint32_t refusedHz =
        0;  ///< the rate that the unit's output does not take when it is opened; 0: none
};

/// None without the folder that DEVICE_SIMULATOR_AUDIO names. Any thread.
std::optional<SoundPresence> ReadSoundPresence();

/// Makes them so; whoever has one open that vanishes meets it at the next read or write. Returns what was
/// wrong; empty when nothing was. Any thread.
std::string SetSoundPresence(const SoundPresence& presence);

/// Lets the player's audio, or else the unit's output, run over once: at once where it runs, else when it
/// does. Returns as SetSoundPresence.
std::string CauseXrun(bool isCapture);

}  // namespace DeviceSimulator
