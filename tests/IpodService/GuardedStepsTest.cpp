#include "IpodService/GuardedSteps.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

struct Steps {
    int First() {
        taken += 'a';
        throw std::runtime_error("no memory");
    }
    int Second() {
        taken += 'b';
        throw 2;
    }
    std::string taken;
};

TEST(GuardedStepsTest, AreAllTakenInTheirOrder) {
    Steps steps;
    TakeSteps(steps, {&Steps::First, &Steps::Second, &Steps::First});
    EXPECT_EQ(steps.taken, "aba");
}

}  // namespace
