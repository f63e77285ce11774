// DeviceManager.h with its functions made visible outside of the library.
#pragma once

#pragma GCC visibility push(default)
#include "DeviceManager/DeviceManager.h"
#pragma GCC visibility pop
