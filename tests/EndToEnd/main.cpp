// Runs the tests, inside the sandbox only: the service deletes files in / and /home/root.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr && !testing::GTEST_FLAG(list_tests)) {
        std::fprintf(stderr, "run this through sandbox.sh, which stands beside its sources\n");
        return 2;
    }
    const int status = RUN_ALL_TESTS();
    if (testing::UnitTest::GetInstance()->test_to_run_count() == 0 && !testing::GTEST_FLAG(list_tests)) {
        std::fprintf(stderr, "no test has this name\n");
        return 2;
    }
    return status;
}
