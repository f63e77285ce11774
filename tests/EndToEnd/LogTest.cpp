// The log, the switches that say what goes into it and where, and the files that come and go beside it.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/EndToEnd/Scene.h"

namespace EndToEnd {
namespace {

namespace fs = std::filesystem;

constexpr const char* kOrderlyEnd = "Exiting applet status: 0\n";

/// The log of a short run of the service, with a player.
std::string ShortRun(std::vector<std::string> arguments) {
    std::ofstream(kLogPath) << "of an earlier run\n";
    Scene scene({.arguments = std::move(arguments)});
    scene.PlugPlayer();
    scene.client.Result("playFirst");
    EXPECT_EQ(scene.service.Stop(), 0);
    return ReadFile(kLogPath);
}

TEST(LogTest, EntriesHaveTheirFormAndReplaceTheEarlierRuns) {
    const std::string log = ShortRun({});
    const std::vector<LogEntry> entries = ParseLog(log);
    ASSERT_GT(entries.size(), 20U);
    EXPECT_TRUE(log.starts_with("[20")) << log.substr(0, 100);
    for (const LogEntry& entry : entries) {
        EXPECT_TRUE(entry.source.starts_with("IpodService/")) << entry.source;
        // A head inside a message would be an entry torn apart by another.
        EXPECT_EQ(entry.message.find("]["), std::string::npos) << entry.message;
    }
    EXPECT_GT(CountEntries(log, "INFO ", "eDevMgrRegisterProcess\n"), 0);
    EXPECT_GT(CountEntries(log, "DEBUG", "Stop JSON-RPC TCP server\n"), 0);
    EXPECT_GT(CountEntries(log, "WARN ", kOrderlyEnd), 0);
}

TEST(LogTest, SwitchesSayWhatGoesIntoIt) {
    struct Case {
        std::vector<std::string> arguments;
        bool info, debug, warn;
    };
    const Case cases[] = {
        {{"-l", "d"}, false, true, true},  // INFO counts for less than DEBUG
        {{"-l", "Warn", "--unknown"}, false, false, true},
        {{"--disable-logging", "-l", "a"}, true, true, true},  // the later switch wins
        {{"-l", "d", "--disable-logging"}, false, false, false},
        {{"-l", "x"}, false, false, false},
    };
    for (const Case& one : cases) {
        const std::string log = ShortRun(one.arguments);
        EXPECT_EQ(log.find("][INFO ]") != std::string::npos, one.info) << log;
        EXPECT_EQ(log.find("][DEBUG]") != std::string::npos, one.debug) << log;
        EXPECT_EQ(log.find("][WARN ]") != std::string::npos, one.warn) << log;
        EXPECT_EQ(log.empty(), !one.warn) << log;
    }
}

TEST(LogTest, VersionAndHelpAnswerAloneAndStartNothing) {
    for (const auto& [argument, answer] :
         {std::pair("--version", "ipod-service 0."), {"--help", "Usage: "}}) {
        std::ofstream(kLogPath) << "of an earlier run\n";
        ServiceProcess asked({.arguments = {argument}});
        EXPECT_EQ(asked.WaitForExit(), 0);
        EXPECT_TRUE(ServiceProcess::StandardOutput().starts_with(answer)) << ServiceProcess::StandardOutput();
        EXPECT_EQ(ReadFile(kLogPath), "of an earlier run\n");
        EXPECT_NE(ShortRun({argument, "-l", "a"}).find(kOrderlyEnd), std::string::npos);
    }
}

TEST(LogTest, GoesToStandardOutputOnRequestAndWithoutItsFolder) {
    EXPECT_EQ(ShortRun({"--stdout"}), "");
    std::string output = ServiceProcess::StandardOutput();
    EXPECT_TRUE(output.starts_with("[20"));
    EXPECT_GT(CountEntries(output, "INFO ", "eDevMgrRegisterProcess\n"), 0);
    EXPECT_NE(output.find(kOrderlyEnd), std::string::npos);

    fs::rename("/home/root", "/home/elsewhere");
    {
        Scene scene;
        EXPECT_EQ(scene.service.Stop(), 0);
        output = scene.service.StandardOutput();
        EXPECT_GT(CountEntries(output, "ERROR", "Could not create the folder /home/root/iap2db (2)\n"), 0);
        EXPECT_GT(CountEntries(output, "WARN ", kOrderlyEnd), 0);
    }
    fs::rename("/home/elsewhere", "/home/root");
}

TEST(LogTest, AddressSwitchMovesThePort) {
    const char* const warning = "without any authentication\n";
    {
        Scene scene({.arguments = {"-a", "127.0.0.2"}, .address = "127.0.0.2"});
        EXPECT_EQ(scene.client.Result("isIpodConnected")["connected"], false);
        EXPECT_THROW(Client(), std::system_error);
        EXPECT_FALSE(scene.service.HasLogged(warning));
    }
    const Scene open({.arguments = {"-a", "0.0.0.0"}});
    EXPECT_TRUE(open.service.HasLogged(warning)) << "whoever reaches the machine";
}

TEST(LogTest, PlaylistsAndDatabasesGoWithTheDeviceAndWithTheService) {
    const std::pair<const char*, bool> files[] = {{"/x.pls", false},
                                                  {"/home/root/iap2db/Phone.db", false},
                                                  {"/keep.txt", true},
                                                  {"/home/root/x.pls", true},
                                                  {"/home/root/Phone.db", true}};
    Scene scene;
    scene.PlugPlayer();
    for (const bool isStopped : {false, true}) {
        for (const auto& [path, isKept] : files) {
            ASSERT_TRUE(std::ofstream(path) << "x" << std::flush) << path;
        }
        isStopped ? static_cast<void>(scene.service.Stop()) : scene.UnplugPlayer();
        for (const auto& [path, isKept] : files) {
            EXPECT_EQ(fs::exists(path), isKept) << path;
        }
    }
}

}  // namespace
}  // namespace EndToEnd
