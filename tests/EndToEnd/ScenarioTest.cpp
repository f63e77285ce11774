// The scenarios that ship, as anyone runs them: ipodsim against the service with its sound.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {
namespace {

constexpr const char* kReport = "/tmp/report";

/// The exit status; what it wrote is then in the report.
int RunIpodsim(const std::string& arguments) {
    const std::string command = std::string(IPODSIM " ") + arguments + " >" + kReport + " 2>&1 </dev/null";
    const int status = std::system(command.c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string RunArguments(const std::string& file) {
    return std::string("run --wait 30 --control ") + kControlSocket + " --patience " +
           std::to_string(TEST_TIME_SCALE) + " " + file;
}

/// For the processes to come. Whole stacks, so that what a library left when it was loaded can be told apart.
void PassOverLeaksOfLoading() {
    const char* options = std::getenv("ASAN_OPTIONS");
    const std::string whole = std::string(options != nullptr ? options : "") + ":fast_unwind_on_malloc=0";
    setenv("ASAN_OPTIONS", whole.c_str(), 1);
    setenv("LSAN_OPTIONS", "print_suppressions=0:suppressions=" LEAK_SUPPRESSIONS, 1);
}

TEST(ScenarioTest, TheShippedOnesPass) {
    PassOverLeaksOfLoading();
    std::filesystem::create_directory("/tmp/sound");
    setenv("DEVICE_SIMULATOR_AUDIO", "/tmp/sound", 1);
    setenv("ALSA_CONFIG_PATH", SOUND_CARD, 1);
    ServiceProcess service;
    for (const auto& entry : std::filesystem::directory_iterator(SCENARIOS))
        EXPECT_EQ(RunIpodsim(RunArguments(entry.path())), 0) << ReadFile(kReport);
    EXPECT_EQ(service.Stop(), 0);
}

TEST(ScenarioTest, TheExitStatusTellsWhatWentWrong) {
    const auto write = [](const char* steps) { std::ofstream("/tmp/steps") << steps; };
    write("plug typ=iap\n");
    EXPECT_EQ(RunIpodsim("check /tmp/steps"), 0);
    EXPECT_EQ(RunIpodsim("run --control /tmp/nobody /tmp/steps"), 3);
    ServiceProcess service;
    EXPECT_EQ(RunIpodsim(RunArguments("/tmp/steps")), 2);
    EXPECT_EQ(ReadFile(kReport), "/tmp/steps:1:6: \"typ\" is no member of plug\n");
    write("request play\nexpect result success=true\nsleep 1s\n");
    EXPECT_EQ(RunIpodsim(RunArguments("/tmp/steps")), 1);
    EXPECT_NE(ReadFile(kReport).find("came      {\"success\":false}"), std::string::npos);
    write("request fly\nexpect error code=-32601\nrepeat 2\nplug\nexpect answer handle>0\nend\n");
    EXPECT_EQ(RunIpodsim(RunArguments("--json /tmp/steps")), 0) << ReadFile(kReport);
    EXPECT_EQ(RunIpodsim(std::string("send unplug handle=9 --control ") + kControlSocket), 1);
    EXPECT_EQ(RunIpodsim("run"), 2);
}

}  // namespace
}  // namespace EndToEnd
