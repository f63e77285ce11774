// Music of plain tones for the player to play, and an ear at the unit's output: the simulated sound card's
// file.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace EndToEnd {

inline constexpr const char* kMusicFolder = "/tmp/music/";
/// What is in the sound card's file is played once it has gone through the output's buffer.
inline constexpr std::chrono::milliseconds kOutputBuffer{200};

/// Gives the services started from now on an empty music folder and a simulated sound card.
void SetUpSound();

/// A file in the music folder of 40 seconds of one tone and then another, each lasting half the time; in the
/// format of its extension. `name` needs no quoting in a shell. Throws std::runtime_error when it fails.
void MakeToneFile(const std::string& name, int rate, int firstHertz, int secondHertz);

/// Until the newest 40 ms of the output are that tone; 0: silence. Throws std::runtime_error when it does not
/// come.
void WaitForTone(double hertz);

/// The sound programs that run, or that nobody has waited for.
std::vector<pid_t> SoundPrograms();

}  // namespace EndToEnd
