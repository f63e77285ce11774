// The audio stream over the simulated sound card: its life, its threads, and what comes out of it.
#include <gst/gst.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <numbers>
#include <thread>

#include "tests/IpodService/ManagerFixture.h"
#include "tests/Support/Deadline.h"

namespace {

using TestSupport::WaitUntil;

class StreamTest : public ManagerTest {
  protected:
    StreamTest() {
        setenv("ALSA_CONFIG_PATH", ALSA_CONFIG, 1);
        setenv("DEVICE_SIMULATOR_AUDIO", m_folder.c_str(), 1);
    }
    ~StreamTest() override {
        m_manager->StopStream();
        // From within the loop: a quit before it runs would be forgotten.
        g_idle_add(
            [](gpointer loop) {
                g_main_loop_quit(static_cast<GMainLoop*>(loop));
                return G_SOURCE_REMOVE;
            },
            m_loop.get());
        m_mainLoop.join();
    }

    /// From the next opening on the card delivers ten seconds of 1 kHz at `rate`: S16LE stereo.
    void PlayTone(std::uint32_t rate) const {
        std::vector<std::int16_t> tone;
        for (std::uint32_t frame = 0; frame < rate * 10; ++frame) {
            tone.resize(tone.size() + 2, static_cast<std::int16_t>(std::lround(
                                             12000 * std::sin(2000 * std::numbers::pi * frame / rate))));
        }
        // A new file each time: a pipeline that still reads the old one goes on with that.
        std::filesystem::remove(m_folder / "capture.pcm");
        std::ofstream(m_folder / "capture.pcm", std::ios::binary)
            .write(reinterpret_cast<const char*>(tone.data()), std::ssize(tone) * 2);
        std::ofstream(m_folder / "capture.rate") << rate << '\n';
    }
    void SetGone(const char* direction, bool gone) const {
        const std::filesystem::path mark = m_folder / (std::string(direction) + ".gone");
        if (gone) {
            std::ofstream(mark) << '\n';
        } else {
            std::filesystem::remove(mark);
        }
    }
    /// What the card has played at this rate: the left channel's samples. None while it plays at another.
    std::vector<std::int16_t> Played(std::uint32_t rate) const {
        constexpr std::size_t kHeader = 44;
        std::ifstream file(m_folder / "playback.wav", std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        std::vector<std::int16_t> samples;
        if (bytes.size() >= kHeader && std::memcmp(&bytes[24], &rate, sizeof rate) == 0) {
            for (std::size_t at = kHeader; at + 4 <= bytes.size(); at += 4) {
                std::memcpy(&samples.emplace_back(), &bytes[at], 2);
            }
        }
        return samples;
    }
    static std::ptrdiff_t CountEntries(const char* folder) {
        const std::filesystem::directory_iterator entries(folder);
        return std::distance(begin(entries), end(entries));
    }
    /// Has GStreamer and GLib open what they keep.
    void StartAndStop() {
        m_manager->StartStream();
        ASSERT_TRUE(WaitForSound(44100, 0.3));
        m_manager->StopStream();
    }
    bool WaitForLog(const char* text) {
        std::string log;
        return WaitUntil([&] { return (log += TakeLog()).find(text) != std::string::npos; });
    }
    bool WaitForSound(std::uint32_t rate, double seconds) const {
        return WaitUntil([&] { return static_cast<double>(Played(rate).size()) >= seconds * rate; });
    }

    const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> m_loop{g_main_loop_new(nullptr, FALSE),
                                                                          g_main_loop_unref};
    std::thread m_mainLoop{g_main_loop_run, m_loop.get()};
};

TEST_F(StreamTest, RestartsLeaveNothingBehind) {
    StartAndStop();
    const auto descriptors = CountEntries("/proc/self/fd");
    const auto threads = CountEntries("/proc/self/task");
    m_manager->StartStream();
    for (int restart = 0; restart < 200; ++restart) {
        ASSERT_EQ(m_manager->RestartStream(restart % 2 == 0 ? 48000 : -1), 1);
    }
    m_manager->StopStream();
    // The threads of GLib's pools end a while after their work.
    EXPECT_TRUE(WaitUntil([&] {
        return CountEntries("/proc/self/fd") <= descriptors && CountEntries("/proc/self/task") <= threads;
    }));
}

TEST_F(StreamTest, RateEventsStormAgainstStartAndStop) {
    Connect();
    std::atomic<bool> ended{false};
    std::thread failing([&] {
        // Errors of the pipeline for the main loop to handle meanwhile, of both kinds.
        for (bool gone = true; !ended; gone = !gone) {
            SetGone("playback", gone);
            SetGone("capture", !gone);
            std::this_thread::yield();
        }
    });
    for (int round = 0; round < 50; ++round) {
        m_manager->StartStream();
        for (const u32 rate : {44100U, 48000U, 32000U}) {
            m_simulator.Fire(DeviceSimulator::MakeEvent({DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, rate}));
        }
        m_manager->StopStream();
        m_manager->StartStream();
        m_manager->ProcessDelayedStreamRestart();
    }
    m_manager->CloseDevice();
    m_simulator.Drain();
    ended = true;
    failing.join();
    EXPECT_EQ(m_manager->StopStream(), 0);
}

TEST_F(StreamTest, ToneKeepsItsPitchAlsoAtANewRate) {
    for (const u32 rate : {44100u, 48000u}) {
        PlayTone(rate);
        EXPECT_EQ(rate == 44100 ? m_manager->StartStream() : m_manager->RestartStream(48000), 1);
        ASSERT_TRUE(WaitForSound(rate, 3));
        // By the upward crossings of zero behind the first 0.7 seconds, which begin with the pipeline.
        const std::vector<std::int16_t> samples = Played(rate);
        std::vector<std::size_t> crossings;
        for (std::size_t i = rate * 7 / 10; i < samples.size(); ++i) {
            if (samples[i - 1] < 0 && samples[i] >= 0) {
                crossings.push_back(i);
            }
        }
        ASSERT_GT(crossings.size(), 1U);
        const auto duration = static_cast<double>(crossings.back() - crossings.front()) / rate;
        const auto periods = static_cast<double>(crossings.size() - 1);
        EXPECT_NEAR(periods / duration, 1000, 1) << rate;  // a gap would lower it
    }
}

TEST_F(StreamTest, ARateEventRestartsTheStreamAndMendsABrokenOne) {
    StartAndStop();
    const auto descriptors = CountEntries("/proc/self/fd");
    Connect();
    Fire({DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, 48000});
    EXPECT_EQ(m_manager->StopStream(), 0) << "none is started by an event";
    SetGone("capture", true);
    EXPECT_EQ(m_manager->StartStream(), 1);
    EXPECT_TRUE(WaitForLog(" - Code: 5\n"));
    EXPECT_EQ(m_manager->StartStream(), 0) << "a stream without its card counts as started";
    for (const u32 rate : {48000u, 44100u}) {  // each another than what was heard before
        SetGone("capture", false);
        PlayTone(rate);
        Fire({DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, rate});
        ASSERT_TRUE(WaitForSound(rate, 0.3));
        SetGone("capture", true);
        EXPECT_TRUE(WaitForLog(" - Code: 9\n"));
        EXPECT_EQ(m_manager->StartStream(), 0) << "refused while broken";
        EXPECT_TRUE(WaitUntil([&] { return CountEntries("/proc/self/fd") <= descriptors; }))
            << "the cards are let go";
    }
    m_manager->ProcessDelayedStreamRestart();
    EXPECT_THAT(TakeLog(), testing::Not(testing::HasSubstr("delayed"))) << "nobody has asked for it";
}

TEST_F(StreamTest, AMissingElementIsNamed) {
    gst_init(nullptr, nullptr);
    GstRegistry* const registry = gst_registry_get();
    // Loaded first: a plugin brings all of its elements back when it is.
    gst_object_unref(gst_element_factory_make("alsasink", nullptr));
    GstPluginFeature* const feature = gst_registry_lookup_feature(registry, "alsasink");
    ASSERT_NE(feature, nullptr);
    gst_registry_remove_feature(registry, feature);
    m_manager->StartStream();
    EXPECT_THAT(TakeLog(), testing::HasSubstr("[WARN ] GStreamer has no element 'alsasink'"));
    gst_registry_add_feature(registry, feature);
    gst_object_unref(feature);
}

}  // namespace
