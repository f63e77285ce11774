// Times of a track, as a person reads them.
#pragma once

#include <cstdint>
#include <string>

namespace IpodControl {

/// "3:07", "1:02:05"; what is below 0 is 0.
std::string ClockText(std::int64_t milliseconds);

}  // namespace IpodControl
