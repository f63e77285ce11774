#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

struct Outcome {
    std::string output;
    int status = -1;
};

Outcome RunProbe(const std::string& environment) {
    Outcome outcome;
    std::FILE* pipe = popen((environment + " exec " SIMULATOR_PROBE).c_str(), "r");
    std::array<char, 256> buffer;
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
        outcome.output += buffer.data();
    }
    outcome.status = pclose(pipe);
    return outcome;
}

TEST(Process, TheEnvironmentSaysWhatIsPluggedIn) {
    const std::string playing = "listed=1 open=1\nprogress=0 tracks=40 status=0 titled=1\n";
    const std::string built = "listed=1 open=1\nprogress=100 tracks=40 status=0 titled=1\n";
    const std::pair<std::string, std::string> cases[] = {
        {"DEVICE_SIMULATOR_DEVICE=iap", "type=14\n" + playing},
        {"DEVICE_SIMULATOR_DEVICE=iap2", "type=17\n" + built},
        {"DEVICE_SIMULATOR_DEVICE=", "type=17\n" + built},
        {"DEVICE_SIMULATOR_DEVICE=stick", "type=2\nlisted=1 open=1\nprogress=0 tracks=0 status=9 titled=0\n"},
    };
    for (const auto& [variable, expected] : cases) {
        const Outcome outcome = RunProbe("DEVICE_SIMULATOR_TRACKS=40 " + variable);
        EXPECT_TRUE(outcome.output.ends_with("register=1\n" + expected)) << outcome.output;
        EXPECT_TRUE(WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == 1) << outcome.status;
    }
}

TEST(Process, EndsWithItsStatusWhateverTheLibraryIsAt) {
    for (int i = 0; i < 10; ++i) {
        const Outcome outcome = RunProbe("DEVICE_SIMULATOR_DEVICE=iap");
        ASSERT_TRUE(WIFEXITED(outcome.status) && WEXITSTATUS(outcome.status) == 1) << outcome.status;
    }
}

TEST(Process, LoadingTheLibraryStartsNoThread) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizer has a thread of its own";
#endif
    EXPECT_EQ(RunProbe("DEVICE_SIMULATOR_DEVICE=iap").output.substr(0, 10), "threads=1\n");
}

TEST(Process, ExportsNothingButItsInterface) {
    std::FILE* pipe = popen("nm -DC --defined-only " SIMULATOR_LIBRARY, "r");
    std::array<char, 512> buffer;
    int functions = 0;
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), pipe) != nullptr) {
        const std::string line = buffer.data();
        const bool isFunction = line.find(" T eDev") != std::string::npos ||
                                line.find(" T eSelectNowPlayingIndex") != std::string::npos;
        functions += isFunction ? 1 : 0;
        EXPECT_TRUE(isFunction || line.find(" DeviceSimulator::Simulator::") != std::string::npos ||
                    line.find(" DeviceSimulator::Make") != std::string::npos ||
                    line.find(" DeviceSimulator::ScanMusicFolder") != std::string::npos)
            << line;
    }
    pclose(pipe);
    EXPECT_EQ(functions, 41);
}

}  // namespace
