// The model's time: it is handed in, wherever it comes from.
#pragma once

#include <chrono>

namespace DeviceSimulator {

using TimePoint = std::chrono::steady_clock::time_point;

}  // namespace DeviceSimulator
