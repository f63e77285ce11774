// The device manager's own names of its values, for the log.
#pragma once

#include "DeviceManager/DeviceManager.h"

// The names lie in one table, section behind section, and a value past the end of its section is named by the
// sections that follow; beyond the table the answer is "DEV_MGR_UNKNOWN_FAILURE". Never null. Any thread.

const char* ResultCodeName(u32 code);
const char* EventName(u32 id);
const char* DeviceTypeName(u32 type);
const char* PlayStateName(u32 state);
const char* ShuffleModeName(u32 mode);
const char* RepeatModeName(u32 mode);
