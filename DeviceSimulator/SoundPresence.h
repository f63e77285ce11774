// Whether the simulated sound devices are there: what a unit's are not when the player's audio falters.
#pragma once

#include <optional>
#include <string>

namespace DeviceSimulator {

struct SoundPresence {
    bool hasCapture = true;   ///< the player's audio
    bool hasPlayback = true;  ///< the unit's output
};

/// None without the folder that DEVICE_SIMULATOR_AUDIO names. Any thread.
std::optional<SoundPresence> ReadSoundPresence();

/// Lets the devices vanish and return; whoever has one open meets it at the next read or write. Returns what
/// was wrong; empty when nothing was. Any thread.
std::string SetSoundPresence(const SoundPresence& presence);

}  // namespace DeviceSimulator
