// What the media program does for the player that has started it.
#pragma once

namespace DeviceSimulator {

/// Tells of music files what they say of themselves: answers the paths that come through `socket`, a stream,
/// until its end. Returns the process's status.
int Scan(int socket);

/// Decodes what the player plays into the sound card's `folder`. Obeys the SoundCommands of `socket`; returns
/// only when it cannot begin, with the process's status.
int FeedSound(int socket, const char* folder);

}  // namespace DeviceSimulator
