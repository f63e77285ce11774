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
    int Third() {
        taken += 'c';
        return 0;
    }
    std::string taken;
};

TEST(GuardedStepsTest, AreAllTakenInTheirOrder) {
    Steps steps;
    TakeSteps(steps, {&Steps::First, &Steps::Second, &Steps::Third});
    EXPECT_EQ(steps.taken, "abc");
}

}  // namespace
