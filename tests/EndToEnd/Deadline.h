// How long a test waits for what has to happen.
#pragma once

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

namespace EndToEnd {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

/// For what takes a moment on an idle machine. Sanitizers slow the service down, so deadlines grow with them.
inline constexpr milliseconds kPatience{10'000};

/// A deadline has passed; the text says what was waited for.
class Timeout : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

Clock::time_point In(milliseconds time);

/// For poll(): at least 0.
int MillisecondsUntil(Clock::time_point deadline);

/// Looks at `condition` every few milliseconds; false when the deadline passes before it holds.
bool WaitUntil(const std::function<bool()>& condition, milliseconds patience = kPatience);

/// As WaitUntil; throws Timeout, naming `what`.
void Require(const std::string& what, const std::function<bool()>& condition,
             milliseconds patience = kPatience);

/// Waits for `events` of poll() on `fd`.
bool WaitForFd(int fd, short events, Clock::time_point deadline);

}  // namespace EndToEnd
