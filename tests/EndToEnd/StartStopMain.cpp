// "start_stop COUNT [SEED]", inside the sandbox: COUNT starts that are stopped in the main loop and, beside
// them, a quarter as many that are stopped earlier. Prints how often each end was seen; status 1 when one was
// not as promised.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <random>

#include "tests/EndToEnd/StartStop.h"

namespace {

void Print(const EndToEnd::StartStop& runs) {
    for (const auto& [outcome, count] : runs.Outcomes())
        std::cout << count << "\t" << outcome << std::endl;
}

int Run(int count, unsigned seed) {
    std::cout << "seed " << seed << std::endl;
    EndToEnd::StartStop runs(seed);
    for (int i = 1; i <= count; ++i) {
        runs.RunAndStopInMainLoop();
        if (i % 8 == 0)
            runs.RunAndStopEarly();
        if (i % 8 == 4)
            runs.RunAndStopOnceHandled();
        if (i % 100 == 0)
            std::cout << i << " of " << count << ", broken promises: " << runs.Failures() << std::endl;
    }
    Print(runs);
    return runs.Failures() == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr || argc < 2) {
        std::cerr << "usage, through sandbox.sh: start_stop COUNT [SEED]\n";
        return 2;
    }
    try {
        const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atol(argv[2])) : std::random_device{}();
        return Run(std::atoi(argv[1]), seed);
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
