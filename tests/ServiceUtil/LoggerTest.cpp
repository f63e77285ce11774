#include "ServiceUtil/Logger.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kStampLength = 21;

class LoggerTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(CLogger::Instance().Open(m_path.c_str())); }
    void TearDown() override {
        CLogger::Instance().Close();
        CLogger::Instance().SetLevel(LogLevel::kAll);
        unlink(m_path.c_str());
    }

    /// What has been written since the last call.
    std::string Written() {
        std::ifstream file(m_path, std::ios::binary);
        file.seekg(m_seen);
        std::string text{std::istreambuf_iterator<char>(file), {}};
        m_seen += static_cast<std::streamoff>(text.size());
        return text;
    }

    const std::string m_path = testing::TempDir() +
                               testing::UnitTest::GetInstance()->current_test_info()->name() + "." +
                               std::to_string(getpid()) + ".log";
    std::streamoff m_seen = 0;
};

TEST_F(LoggerTest, EntryHasLocalTimeLevelSourceAndTheMessageOnItsOwnLine) {
    CLogger::Log("Room/File.cpp", 42, LogLevel::kWarn, "%s = %d", "answer", 42);
    const std::string text = Written();
    std::tm time{};
    time.tm_isdst = -1;
    ASSERT_EQ(strptime(text.c_str(), "[%Y-%m-%d %H:%M:%S]", &time), text.c_str() + kStampLength) << text;
    EXPECT_NEAR(std::difftime(std::mktime(&time), std::time(nullptr)), 0.0, 5.0);
    EXPECT_EQ(text.substr(kStampLength), "[WARN ][Room/File.cpp:42]\n\tanswer = 42");
}

TEST_F(LoggerTest, TimeFollowsAChangedZone) {
    const std::time_t deadline = std::time(nullptr) + 10;
    for (const int hoursWest : {5, -3}) {
        setenv("TZ", ("ZONE" + std::to_string(hoursWest)).c_str(), 1);
        bool follows = false;
        while (!follows && std::time(nullptr) < deadline) {
            LOG_INFO("m\n");
            const std::time_t there = std::time(nullptr) - std::time_t{hoursWest} * 3600;
            std::tm time{};
            gmtime_r(&there, &time);
            follows = std::stoi(Written().substr(12, 2)) == time.tm_hour;
        }
        EXPECT_TRUE(follows) << hoursWest;
    }
    unsetenv("TZ");
}

TEST_F(LoggerTest, LetterSetsTheLowestLevelThatIsWritten) {
    const std::string letters = "AaTtIiDdWwEeFf";
    const std::vector<std::string> tags{"[TRACE]", "[TRACE]", "[INFO ]", "[DEBUG]",
                                        "[WARN ]", "[ERROR]", "[FATAL]"};
    for (int c = 0; c < 256; ++c) {
        const std::size_t threshold = std::min(letters.find(static_cast<char>(c)) / 2, tags.size());
        CLogger::Instance().SetLevel(CLogger::LevelFromChar(static_cast<char>(c)));
        for (std::size_t level = 0; level < tags.size(); ++level) {
            CLogger::Log("f", 1, static_cast<int>(level) - 1, "m\n");
            EXPECT_EQ(Written().find(tags[level]), level < threshold ? std::string::npos : kStampLength)
                << c << ' ' << level;
        }
    }
    CLogger::Instance().SetLevel(LogLevel::kWarn);
    int workedOut = 0;
    LOG_DEBUG("%d\n", ++workedOut);
    EXPECT_EQ(workedOut, 0) << "for an entry that is not written";
    // Levels outside their range
    CLogger::Instance().SetLevel(100);
    CLogger::Log("f", 1, LogLevel::kFatal, "m\n");
    EXPECT_EQ(Written(), "");
    CLogger::Log("f", 1, LogLevel::kOff, "m\n");
    EXPECT_EQ(Written().find("[INFO ]"), kStampLength);
    CLogger::Instance().SetLevel(-100);
    CLogger::Log("f", 1, LogLevel::kAll - 1, "m\n");
    EXPECT_EQ(Written(), "");
}

TEST_F(LoggerTest, OneFileIsOpenAtATime) {
    CLogger& logger = CLogger::Instance();
    EXPECT_FALSE(logger.Open((m_path + ".second").c_str()));
    LOG_INFO("first\n");
    EXPECT_NE(Written(), "");
    EXPECT_TRUE(logger.Close());
    EXPECT_FALSE(logger.Close());
    EXPECT_FALSE(logger.Open(nullptr));
    EXPECT_FALSE(logger.Open("/nonexistent/folder/file.log"));
}

TEST_F(LoggerTest, LongMessagesAndNulBytesAreWrittenWhole) {
    // One by one around what fits without memory of its own, then far beyond.
    for (std::size_t length = 4000; length < 200000; length += length < 4100 ? 1 : 50000) {
        const std::string message(length, 'x');
        const std::string whole = "[INFO ][f:-1]\n\t" + message + std::string("\0\n", 2);
        CLogger::Log("f", -1, LogLevel::kInfo, "%s%c\n", message.c_str(), '\0');
        EXPECT_EQ(Written().substr(kStampLength), whole);
        CLogger::LogPlain("f", -1, LogLevel::kInfo, {message, std::string_view("\0\n", 2)});
        EXPECT_EQ(Written().substr(kStampLength), whole);
    }
}

TEST_F(LoggerTest, EachEntryIsOneWrite) {
    CLogger::Instance().Close();
    std::array<int, 2> ends{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()), 0);  // a message for each write
    std::fflush(stdout);
    const int standardOutput = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    LOG_INFO("%d\n", 1);
    LOG_INFO("%s\n", std::string(10000, '2').c_str());
    CLogger::LogPlain("f", 1, LogLevel::kInfo, {"3", "\n"});
    dup2(standardOutput, STDOUT_FILENO);
    for (const std::string& message : {std::string("1"), std::string(10000, '2'), std::string("3")}) {
        std::string entry(20000, '\0');
        entry.resize(static_cast<std::size_t>(recv(ends[0], entry.data(), entry.size(), 0)));
        EXPECT_TRUE(entry.starts_with("[20") && entry.ends_with("]\n\t" + message + "\n")) << entry;
    }
    for (const int fd : {standardOutput, ends[0], ends[1]}) {
        close(fd);
    }
}

TEST_F(LoggerTest, EntriesOfThreadsNeverMix) {
    constexpr int kThreads = 4;
    constexpr int kEntries = 1000;
    const auto messageOf = [](int id) {
        return std::string(static_cast<std::size_t>(1 + id * 700), static_cast<char>('a' + id));
    };
    std::vector<std::thread> threads;
    for (int id = 0; id < kThreads; ++id) {
        threads.emplace_back([id, text = messageOf(id)] {
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
    for (; std::getline(file, head) && std::getline(file, message); ++entries) {
        ASSERT_EQ(message, "\t" + messageOf(head.at(head.size() - 2) - '0'));
    }
    EXPECT_EQ(entries, kThreads * kEntries);
}

TEST_F(LoggerTest, NoEntryIsLostWhenTheFileIsClosed) {
    const auto entriesIn = [](const std::string& text) { return std::count(text.begin(), text.end(), '['); };
    testing::internal::CaptureStdout();
    std::atomic<bool> done{false};
    std::atomic<int> logged{0};
    std::vector<std::thread> threads;
    for (int id = 0; id < 3; ++id) {
        threads.emplace_back([&] {
            for (; !done; ++logged) {
                LOG_INFO("m\n");
            }
        });
    }
    std::ptrdiff_t found = 0;
    for (int round = 0; round < 200; ++round) {
        for (const int before = logged; logged == before;) {
            std::this_thread::yield();
        }
        EXPECT_TRUE(CLogger::Instance().Close());
        m_seen = 0;
        found += entriesIn(Written());
        ASSERT_TRUE(CLogger::Instance().Open(m_path.c_str()));
    }
    done = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    m_seen = 0;
    found += entriesIn(Written()) + entriesIn(testing::internal::GetCapturedStdout());
    EXPECT_EQ(found, logged * 3);  // the brackets of the time, the level and the source
}

}  // namespace
