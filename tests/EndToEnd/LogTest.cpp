// The log, and the switches that say what goes into it and where.

#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

constexpr const char* kLogPath = "/home/root/ipod.log";
constexpr const char* kOrderlyEnd = "Exiting applet status: 0\n";

/// Runs the service with a player for a moment and stops it.
struct ShortRun {
    explicit ShortRun(std::vector<std::string> arguments) {
        WriteFile(kLogPath, "of an earlier run\n");
        Scene scene({.arguments = std::move(arguments)});
        scene.PlugPlayer();
        scene.client.Result("playFirst");
        EXPECT_EQ(scene.Stop(), 0);
        output = scene.service.StandardOutput();
        log = scene.log.Text();
    }

    std::string output;
    std::string log;
};

std::set<std::string> Levels(const std::string& log) {
    std::set<std::string> levels;
    for (const LogEntry& entry : ParseLog(log))
        levels.insert(entry.level);
    return levels;
}

bool HasEntry(const std::string& log, const std::string& level, const std::string& message) {
    for (const LogEntry& entry : ParseLog(log))
        if (entry.level == level && entry.message == message)
            return true;
    return false;
}

TEST(LogTest, EntriesHaveTheirFormAndReplaceTheEarlierRuns) {
    const ShortRun run({});
    const std::vector<LogEntry> entries = ParseLog(run.log);
    ASSERT_GT(entries.size(), 20U);
    EXPECT_EQ(run.log.rfind("[20", 0), 0U) << run.log.substr(0, 100);
    for (const LogEntry& entry : entries) {
        EXPECT_NE(entry.source.rfind("IpodService/", 0), std::string::npos) << entry.source;
        // A head inside a message would be an entry torn apart by another.
        EXPECT_EQ(entry.message.find("]["), std::string::npos) << entry.message;
    }
    EXPECT_TRUE(HasEntry(run.log, "INFO ", "eDevMgrRegisterProcess\n"));
    EXPECT_TRUE(HasEntry(run.log, "INFO ", "EIMS_Connected"));
    EXPECT_TRUE(HasEntry(run.log, "WARN ", "eDevMgriPodOpenMdBrowseSession\n"));
    EXPECT_TRUE(HasEntry(run.log, "DEBUG", "Stop JSON-RPC TCP server\n"));
    EXPECT_TRUE(HasEntry(run.log, "WARN ", kOrderlyEnd));
}

TEST(LogTest, ThresholdHidesWhatIsBelow) {
    // INFO counts for less than DEBUG.
    const std::set<std::string> debug = Levels(ShortRun({"-l", "d"}).log);
    EXPECT_TRUE(debug.count("DEBUG") == 1 && debug.count("WARN ") == 1 && debug.count("INFO ") == 0);
    const std::set<std::string> warn = Levels(ShortRun({"-l", "Warn", "--unknown"}).log);
    EXPECT_TRUE(warn.count("WARN ") == 1 && warn.count("DEBUG") == 0 && warn.count("INFO ") == 0);
    // The later switch wins.
    EXPECT_EQ(Levels(ShortRun({"--disable-logging", "-l", "a"}).log).count("INFO "), 1U);
    EXPECT_EQ(ShortRun({"-l", "d", "--disable-logging"}).log, "");
    EXPECT_EQ(ShortRun({"-l", "x"}).log, "");
}

TEST(LogTest, StandardOutputTakesItOver) {
    const ShortRun run({"--stdout"});
    EXPECT_EQ(run.log, "");
    EXPECT_EQ(run.output.rfind("[20", 0), 0U);
    EXPECT_TRUE(HasEntry(run.output, "INFO ", "eDevMgrRegisterProcess\n"));
    EXPECT_NE(run.output.find(kOrderlyEnd), std::string::npos);
}

TEST(LogTest, GoesToStandardOutputWithoutItsFolder) {
    std::filesystem::rename("/home/root", "/home/elsewhere");
    {
        Scene scene;
        EXPECT_EQ(scene.Stop(), 0);
        const std::string output = scene.service.StandardOutput();
        EXPECT_TRUE(HasEntry(output, "ERROR", "Could not create the folder /home/root/iap2db (2)\n"));
        EXPECT_TRUE(HasEntry(output, "WARN ", kOrderlyEnd));
    }
    std::filesystem::rename("/home/elsewhere", "/home/root");
}

TEST(LogTest, AddressSwitchMovesThePort) {
    Scene scene({.arguments = {"-a", "127.0.0.2"}, .address = "127.0.0.2"});
    EXPECT_EQ(scene.client.Result("isIpodConnected")["connected"], false);
    EXPECT_THROW(RpcClient("127.0.0.1"), std::system_error);
}

}  // namespace
}  // namespace EndToEnd
