// The sound: how soon it follows the buttons, what it costs, whether it breaks. In the sandbox, as it runs
// the service:
//
//     tests/EndToEnd/sandbox.sh <build folder>/bench/bench_sound [MINUTES]     one minute under load when
//     left out
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "bench/sound/Sound.h"

int main(int count, char** words) {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr) {
        std::fputs("Closing a device deletes files in / and /home/root: run this in the sandbox.\n", stderr);
        return 2;
    }
    constexpr int kTimes = 20;
    try {
        Bench::MeasureStream(std::chrono::minutes(count > 1 ? std::max(std::atoi(words[1]), 1) : 1));
        Bench::MeasureLatency(kTimes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
