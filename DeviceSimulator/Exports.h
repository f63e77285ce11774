// DeviceManager.h with its functions made visible outside of the library. Included first: what comes before
// it and declares them too would leave them hidden.
#pragma once

#pragma GCC visibility push(default)
#include "DeviceManager/DeviceManager.h"
#pragma GCC visibility pop
