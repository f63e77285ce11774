#include "IpodControl/ClockText.h"

#include <algorithm>

namespace IpodControl {

namespace {

std::string TwoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string ClockText(std::int64_t milliseconds) {
    const std::int64_t seconds = std::max<std::int64_t>(milliseconds, 0) / 1000;
    const std::int64_t hours = seconds / 3600;
    const std::string minutes =
        hours > 0 ? std::to_string(hours) + ':' + TwoDigits(seconds / 60 % 60) : std::to_string(seconds / 60);
    return minutes + ':' + TwoDigits(seconds % 60);
}

}  // namespace IpodControl
