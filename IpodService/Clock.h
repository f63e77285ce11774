// The wall clock that deadlines are kept in.
#pragma once

#include <sys/time.h>

#include "DeviceManager/DeviceManager.h"

/// Milliseconds of the wall clock in 32 bits, wrapping. Unsigned throughout: seconds times 1000 overflows a
/// signed 32-bit time_t.
inline u32 NowMs() {
    timeval now{};
    gettimeofday(&now, nullptr);
    return static_cast<u32>(now.tv_sec) * 1000u + static_cast<u32>(now.tv_usec) / 1000u;
}
