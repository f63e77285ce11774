#include "ServiceUtil/ProcessEnd.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

namespace {

TEST(ProcessEndDeathTest, EndsWhatExitDoesNotAndNothingSooner) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto hang = [] {
        EndProcessAfter(std::chrono::milliseconds{10}, 3);
        for (;;) {
            pause();
        }
    };
    EXPECT_EXIT(hang(), testing::ExitedWithCode(3), "");
    const auto exitInTime = [] {
        EndProcessAfter(std::chrono::hours{1}, 3);
        std::exit(4);
    };
    EXPECT_EXIT(exitInTime(), testing::ExitedWithCode(4), "");
}

}  // namespace
