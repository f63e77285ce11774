// The media program's work with sound: decodes what the player plays into the sound card's folder.
#pragma once

namespace DeviceSimulator {

/// Obeys the SoundCommands of `socket`; returns only when it cannot begin, with the process's status.
int FeedSound(int socket, const char* folder);

}  // namespace DeviceSimulator
