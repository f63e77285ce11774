// The audio stream over the simulated sound card: its life, its threads, and what comes out of it.
#include <atomic>

#include "IpodService/GstreamerStreamer.h"
#include "tests/IpodService/ManagerFixture.h"
#include "tests/IpodService/SoundCard.h"

namespace {

using testing::HasSubstr;

constexpr i32 kElementsChooseRate = -1;

class StreamTest : public ManagerTest {
  protected:
    ~StreamTest() override { m_manager->StopStream(); }

    bool WaitForLog(const std::string& text) {
        std::string all;
        return WaitFor([&] {
            all += m_log.Take();
            return all.find(text) != std::string::npos;
        });
    }

    SoundCard m_card{m_scratch.Path()};
};

size_t CountEntries(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<size_t>(std::distance(begin(entries), end(entries)));
}

struct Resources {
    size_t descriptors = CountEntries("/proc/self/fd");
    size_t threads = CountEntries("/proc/self/task");
    bool AreWithin(const Resources& other) const {
        return descriptors <= other.descriptors && threads <= other.threads;
    }
};

bool DispatchUntil(const std::function<bool()>& holds) {
    return WaitFor([&] {
        while (g_main_context_iteration(nullptr, FALSE)) {
        }
        return holds();
    });
}

TEST_F(StreamTest, OneStreamAtATime) {
    EXPECT_EQ(m_manager->StopStream(), 0);
    EXPECT_EQ(m_manager->RestartStream(48000), 0);
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] no ipod stream to stop\n[ERROR] not restarting ipod stream\n"));
    EXPECT_EQ(m_manager->StartStream(), 1);
    EXPECT_EQ(m_manager->StartStream(), 0);
    EXPECT_EQ(m_manager->RestartStream(kElementsChooseRate), 1);
    EXPECT_EQ(m_manager->StopStream(), 1);
    EXPECT_EQ(m_manager->StopStream(), 0);
    EXPECT_EQ(m_log.Take(),
              "[INFO ] starting ipod stream\n"
              "[INFO ] not starting ipod stream\n"
              "[INFO ] restarting ipod stream\n"
              "[INFO ] stopping ipod stream\n"
              "[INFO ] no ipod stream to stop\n");
}

TEST_F(StreamTest, MessageOfAStreamThatIsGoneIsNotHandled) {
    m_card.SetPlaybackGone(true);
    GstreamerStreamer kept;
    kept.StartPipeline(kElementsChooseRate);
    std::string log;
    const auto logged = [&](const char* text) {
        log += m_log.Take();
        return log.find(text) != std::string::npos;
    };
    EXPECT_TRUE(DispatchUntil([&] { return logged(" - Code: 6\n"); }));
    kept.StopPipeline();
    log.clear();

    {
        GstreamerStreamer gone;
        gone.StartPipeline(kElementsChooseRate);
        gone.StopPipeline();
    }
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
    EXPECT_FALSE(logged("Error"));
}

TEST_F(StreamTest, RestartsLeaveNothingBehind) {
    const MainLoopThread mainLoop;
    m_manager->StartStream();
    ASSERT_TRUE(m_card.WaitForSound(44100, 0.3));
    m_manager->StopStream();
    const Resources before;
    m_manager->StartStream();
    for (int restart = 0; restart < 200; ++restart)
        ASSERT_EQ(m_manager->RestartStream(restart % 2 == 0 ? 48000 : kElementsChooseRate), 1);
    m_manager->StopStream();
    // The threads of GLib's pools end a while after their work.
    EXPECT_TRUE(WaitFor([&] { return Resources().AreWithin(before); }))
        << Resources().descriptors << " descriptors after " << before.descriptors << ", "
        << Resources().threads << " threads after " << before.threads;
}

TEST_F(StreamTest, RateEventsStormAgainstStartAndStop) {
    const MainLoopThread mainLoop;
    Connect();
    std::atomic<bool> ended{false};
    std::thread failing([&] {
        // Errors of the pipeline for the main loop to handle meanwhile, of both kinds.
        for (bool gone = true; !ended; gone = !gone) {
            m_card.SetPlaybackGone(gone);
            m_card.SetCaptureGone(!gone);
            std::this_thread::yield();
        }
    });
    constexpr u32 kSampleRateEvent = 17;
    for (int round = 0; round < 50; ++round) {
        m_manager->StartStream();
        for (u32 rate : {44100U, 48000U, 32000U})
            m_simulator.Fire(DeviceSimulator::MakeEvent({kSampleRateEvent, rate}));
        m_manager->StopStream();
        m_manager->StartStream();
        m_manager->ProcessDelayedStreamRestart();
    }
    m_manager->CloseDevice();
    m_simulator.Drain();
    ended = true;
    failing.join();
    EXPECT_EQ(m_manager->StopStream(), 0);
    m_card.SetCaptureGone(false);
    m_card.SetPlaybackGone(false);
    m_card.PlayTone(44100, 5);
    EXPECT_EQ(m_manager->StartStream(), 1);
    EXPECT_TRUE(m_card.WaitForSound(44100, 0.5));
}

TEST_F(StreamTest, ToneComesOutWithoutAGap) {
    const MainLoopThread mainLoop;
    m_card.PlayTone(44100, 10);
    m_manager->StartStream();
    ASSERT_TRUE(m_card.WaitForSound(44100, 3));
    m_manager->StopStream();
    const PlayedSound tone = m_card.Played().After(0.7);
    EXPECT_NEAR(tone.Pitch(), 1000, 1);
    EXPECT_LT(tone.LongestSilence(), 0.001);
}

TEST_F(StreamTest, ToneFromAFifoComesOutWithoutAGap) {
    const MainLoopThread mainLoop;
    std::thread writer = m_card.PlayToneThroughFifo(44100, 4);
    m_manager->StartStream();
    EXPECT_TRUE(m_card.WaitForSound(44100, 3));
    m_manager->StopStream();
    writer.join();
    const PlayedSound tone = m_card.Played().After(0.7);
    EXPECT_NEAR(tone.Pitch(), 1000, 1);
    EXPECT_LT(tone.LongestSilence(), 0.001);
}

TEST_F(StreamTest, RestartAtANewRateKeepsThePitch) {
    const MainLoopThread mainLoop;
    m_card.PlayTone(44100, 10);
    m_manager->StartStream();
    ASSERT_TRUE(m_card.WaitForSound(44100, 0.5));
    m_card.PlayTone(48000, 10);
    m_manager->RestartStream(48000);
    ASSERT_TRUE(m_card.WaitForSound(48000, 2));
    m_manager->StopStream();
    const PlayedSound tone = m_card.Played().After(0.7);
    EXPECT_NEAR(tone.Pitch(), 1000, 1);
    EXPECT_LT(tone.LongestSilence(), 0.001);
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] restarting ipod stream\n"
                          "[WARN ] !error! - could not link rate 48000 , doing backup linking \n"));
}

TEST_F(StreamTest, UnpluggedCardBreaksTheStreamUntilItIsStopped) {
    const MainLoopThread mainLoop;
    m_card.PlayTone(44100, 10);
    m_manager->StartStream();
    ASSERT_TRUE(m_card.WaitForSound(44100, 0.5));
    m_card.SetCaptureGone(true);
    EXPECT_TRUE(WaitForLog(" - Code: 9\n"));
    EXPECT_EQ(m_manager->StartStream(), 0) << "refused while broken";
    m_card.SetCaptureGone(false);
    EXPECT_EQ(m_manager->StopStream(), 1);
    EXPECT_EQ(m_manager->StartStream(), 1);
    EXPECT_TRUE(m_card.WaitForSound(44100, 1));

    m_card.SetCaptureGone(true);
    EXPECT_TRUE(WaitForLog(" - Code: 9\n"));
    m_card.SetCaptureGone(false);
    m_card.PlayTone(48000, 10);
    EXPECT_EQ(m_manager->RestartStream(48000), 1) << "a new rate mends it as well";
    EXPECT_TRUE(m_card.WaitForSound(48000, 1));
}

TEST_F(StreamTest, MissingCardIsReportedAndTheStreamCountsAsStarted) {
    const MainLoopThread mainLoop;
    m_card.SetCaptureGone(true);
    EXPECT_EQ(m_manager->StartStream(), 1);
    EXPECT_TRUE(WaitForLog(" - Code: 5\n"));
    EXPECT_EQ(m_manager->StartStream(), 0);
}

}  // namespace
