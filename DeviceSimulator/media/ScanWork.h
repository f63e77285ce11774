// The media program's work with folders of music: tells of each file what it says of itself.
#pragma once

namespace DeviceSimulator {

/// Answers the paths that come through `socket`, a stream, until its end. Returns the process's status.
int Scan(int socket);

}  // namespace DeviceSimulator
