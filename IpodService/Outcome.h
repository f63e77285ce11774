// What the manager's operations answer.
#pragma once

#include "DeviceManager/DeviceManager.h"

/// The answer of an operation that wraps one call: 0 for success, anything else is a failure.
constexpr i32 Outcome(u32 code) {
    return static_cast<i32>(DEV_MGR_SUCCESS - code);
}
