#include "tests/EndToEnd/Deadline.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace EndToEnd {

Clock::time_point In(milliseconds time) {
    return Clock::now() + time * END_TO_END_TIME_SCALE;
}

int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

bool WaitUntil(const std::function<bool()>& condition, milliseconds patience) {
    constexpr milliseconds kPause{5};
    const Clock::time_point deadline = In(patience);
    while (!condition()) {
        if (Clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(kPause);
    }
    return true;
}

void Require(const std::string& what, const std::function<bool()>& condition, milliseconds patience) {
    if (!WaitUntil(condition, patience))
        throw Timeout("timed out waiting for " + what);
}

bool WaitForFd(int fd, short events, Clock::time_point deadline) {
    pollfd entry{fd, events, 0};
    int ready = 0;
    do {
        ready = poll(&entry, 1, MillisecondsUntil(deadline));
    } while (ready < 0 && errno == EINTR);
    return ready > 0;
}

}  // namespace EndToEnd
