// Runs the tests, inside the sandbox only: the service deletes files in / and /home/root.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (std::getenv("IPOD_TEST_SANDBOX") != nullptr || testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    std::fprintf(stderr, "run this through sandbox.sh, which stands beside its sources\n");
    return 2;
}
