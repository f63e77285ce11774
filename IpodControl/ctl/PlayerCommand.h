// Where the full-screen view, a library of its own, is called.
#pragma once

#include "IpodControl/ctl/Settings.h"

namespace IpodControl {

int RunPlayerCommand(const Settings& settings, bool hasColours);

}  // namespace IpodControl
