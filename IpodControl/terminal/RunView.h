// A full-screen view of what plays and of the library, in a terminal.
#pragma once

#include <chrono>

#include "IpodControl/Wire.h"

namespace IpodControl {

struct ViewOptions {
    Endpoint endpoint;
    /// For one attempt to connect. No limit for answers: the view tells how long it has been waiting.
    std::chrono::milliseconds timeout{5000};
    bool hasColours = true;  ///< where the terminal has them
};

/// Runs until the person quits or a signal ends it, and leaves the terminal as it was. The exit status: 0,
/// 1 when the view itself fails, 2 without a terminal that it can draw on, 128 and a signal's number.
/// To be called from the only thread. Sets the process's locale.
int RunView(const ViewOptions& options);

}  // namespace IpodControl
