#include "ServiceUtil/Logger.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

namespace {

class LoggerTest : public testing::Test {
  protected:
    void SetUp() override {
        CLogger::Instance().SetLevel(LogLevel::kAll);
        ASSERT_TRUE(CLogger::Instance().Open(m_path.c_str()));
    }

    void TearDown() override {
        CLogger::Instance().Close();
        CLogger::Instance().SetLevel(LogLevel::kOff);
    }

    std::string Written() const {
        std::ifstream file(m_path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string m_path =
        testing::TempDir() + testing::UnitTest::GetInstance()->current_test_info()->name() + ".log";
};

TEST_F(LoggerTest, EntryHasTimeLevelSourceAndTheMessageOnItsOwnLine) {
    CLogger::Log("Room/File.cpp", 42, LogLevel::kWarn, "%s = %d\n", "answer", 42);
    CLogger::Log("f", 1, 77, "no line end");
    std::tm time{};
    int stampLength = 0;
    const std::string text = Written();
    ASSERT_EQ(std::sscanf(text.c_str(), "[%4d-%2d-%2d %2d:%2d:%2d]%n", &time.tm_year, &time.tm_mon,
                          &time.tm_mday, &time.tm_hour, &time.tm_min, &time.tm_sec, &stampLength),
              6);
    time.tm_year -= 1900;
    time.tm_mon -= 1;
    time.tm_isdst = -1;
    EXPECT_NEAR(std::difftime(std::mktime(&time), std::time(nullptr)), 0.0, 5.0);

    EXPECT_EQ(stampLength, 21);
    const std::string first = "[WARN ][Room/File.cpp:42]\n\tanswer = 42\n";
    EXPECT_EQ(text.substr(21, first.size()), first);
    EXPECT_EQ(text.substr(21 + first.size() + 21), "[INFO ][f:1]\n\tno line end");
}

TEST_F(LoggerTest, MacrosPassTheCallersPathInsideTheProject) {
    LOG_ERROR("x\n");
    EXPECT_NE(Written().find("[ERROR][tests/ServiceUtil/LoggerTest.cpp:"), std::string::npos) << Written();
}

TEST_F(LoggerTest, ThresholdDecidesWhichLevelsAreWritten) {
    const std::vector<std::string> tags{"[TRACE]", "[TRACE]", "[INFO ]", "[DEBUG]",
                                        "[WARN ]", "[ERROR]", "[FATAL]"};
    for (const int threshold : {-5, -1, 0, 1, 2, 3, 4, 5, 6, 100}) {
        CLogger::Instance().SetLevel(threshold);
        for (int level = LogLevel::kAll; level <= LogLevel::kFatal; ++level) {
            const std::size_t before = Written().size();
            CLogger::Log("f", 1, level, "m\n");
            const std::string entry = Written().substr(before);
            EXPECT_EQ(!entry.empty(), level >= threshold) << threshold << ' ' << level;
            if (!entry.empty()) {
                EXPECT_EQ(entry.substr(21, 7), tags[static_cast<std::size_t>(level + 1)]);
            }
        }
    }
}

TEST_F(LoggerTest, OpenAndCloseReportWhatTheyDid) {
    CLogger& logger = CLogger::Instance();
    EXPECT_FALSE(logger.Open((m_path + ".second").c_str()));
    CLogger::Log("f", 1, LogLevel::kInfo, "first\n");
    EXPECT_NE(Written().find("first"), std::string::npos);

    EXPECT_TRUE(logger.Close());
    EXPECT_FALSE(logger.Close());
    testing::internal::CaptureStdout();
    CLogger::Log("f", 1, LogLevel::kInfo, "to standard output\n");
    EXPECT_NE(testing::internal::GetCapturedStdout().find("\tto standard output\n"), std::string::npos);

    EXPECT_FALSE(logger.Open(nullptr));
    EXPECT_FALSE(logger.Open("/nonexistent/folder/file.log"));
    EXPECT_TRUE(logger.Open(m_path.c_str()));
    EXPECT_EQ(Written(), "");
}

TEST_F(LoggerTest, LongMessagesAndNulBytesAreWrittenWhole) {
    for (const std::size_t length :
         {900U, 980U, 981U, 982U, 983U, 984U, 985U, 986U, 987U, 988U, 989U, 990U, 100000U}) {
        const std::string message(length, 'x');
        const std::size_t before = Written().size();
        CLogger::Log("file", 1, LogLevel::kInfo, "%s\n", message.c_str());
        const std::string entry = Written().substr(before);
        EXPECT_EQ(entry.substr(entry.find('\t') + 1), message + "\n");
    }
    CLogger::Log("file", 1, LogLevel::kInfo, "a%cb\n", '\0');
    EXPECT_NE(Written().find(std::string("\ta\0b\n", 5)), std::string::npos);
}

TEST_F(LoggerTest, EntriesOfThreadsNeverMix) {
    constexpr int kThreads = 4;
    constexpr int kEntries = 1000;
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id) {
        threads.emplace_back([id] {
            const std::string text(static_cast<std::size_t>(1 + id * 700), static_cast<char>('a' + id));
            for (int i = 0; i < kEntries; ++i) {
                CLogger::Log("f", id, LogLevel::kInfo, "%s\n", text.c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::ifstream file(m_path);
    std::string head;
    std::string message;
    int entries = 0;
    while (std::getline(file, head) && std::getline(file, message)) {
        const int id = head.at(head.size() - 2) - '0';
        ASSERT_EQ(message,
                  "\t" + std::string(static_cast<std::size_t>(1 + id * 700), static_cast<char>('a' + id)));
        ++entries;
    }
    EXPECT_EQ(entries, kThreads * kEntries);
}

TEST_F(LoggerTest, LettersMapToLevelsAndAllOthersToOff) {
    const std::string letters = "atidwef";
    for (int c = 0; c < 256; ++c) {
        const char letter = static_cast<char>(c);
        const bool isUpper = letter >= 'A' && letter <= 'Z';
        const std::size_t at = letters.find(isUpper ? static_cast<char>(letter + 32) : letter);
        const int expected = at == std::string::npos ? LogLevel::kOff : static_cast<int>(at) - 1;
        EXPECT_EQ(CLogger::LevelFromChar(letter), expected) << c;
    }
}

}  // namespace
