#include "DeviceSimulator/device/Player.h"

#include <numeric>
#include <set>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

class PlayerTest : public testing::Test {
  protected:
    /// Plays the first `count` tracks of the library.
    void Start(std::uint32_t count, std::uint32_t start = 0) {
        auto tracks = std::make_shared<ItemList>(count);
        std::iota(tracks->begin(), tracks->end(), 0U);
        player.Start(library, tracks, start, now);
        Events();
    }

    std::string After(std::chrono::milliseconds time) {
        now += time;
        player.Advance(now);
        return Events();
    }

    std::string Events() {
        std::string text;
        for (const PlayerEvent& event : player.TakeEvents()) {
            text += (text.empty() ? "" : " ") + EventText(event.id, event.value);
        }
        return text;
    }

    std::uint32_t Track() const { return player.Queue().TrackAt(player.Queue().Position()); }

    std::vector<std::uint32_t> Order() const {
        std::vector<std::uint32_t> order;
        for (std::uint32_t i = 0; i < player.Queue().Count(); ++i) {
            order.push_back(player.Queue().TrackAt(i));
        }
        return order;
    }

    std::shared_ptr<const Library> library = MakeTestLibrary();
    Player player{7};
    TimePoint now{100s};
};

TEST_F(PlayerTest, TellsTheTimeOnceASecondOfTheTrackAndTheRateWhenItDiffers) {
    Start(4, 1);
    EXPECT_EQ(After(999ms), "");
    EXPECT_EQ(After(1ms), "play-time=1000");
    EXPECT_EQ(After(2400ms), "play-time=2000 play-time=3000");
    EXPECT_EQ(player.Pause(now), DEV_MGR_SUCCESS);
    EXPECT_EQ(player.NextDue(), std::nullopt);
    EXPECT_EQ(After(5s), "play-paused");
    EXPECT_EQ(player.ElapsedMs(now), 3400U);
    EXPECT_EQ(player.Play(now), DEV_MGR_SUCCESS);
    EXPECT_EQ(After(5600ms),
              "play-started play-time=4000 play-time=5000 play-time=6000 play-time=7000 play-time=8000 "
              "play-time=9000");
    EXPECT_EQ(After(1s), "play-track-changed");
    After(9s);
    EXPECT_EQ(After(1s), "play-track-changed new-track-sample-rate=48000");
    After(9s);
    EXPECT_EQ(After(1s), "play-stopped");
    player.Play(now);
    EXPECT_EQ(Events(), "play-track-changed new-track-sample-rate=44100 play-started");
}

TEST_F(PlayerTest, PassesOverTracksUntilNoneIsLeft) {
    for (const DevMgrRepeatMode repeat :
         {E_DEVMGR_IPOD_REPEAT_NONE, E_DEVMGR_IPOD_REPEAT_ONE, E_DEVMGR_IPOD_REPEAT_ALL}) {
        player.SetRepeat(repeat);
        Start(3, 1);
        player.PassOver(now);
        EXPECT_EQ(Track(), 2U);
        After(10s);  // one that is played through: the count begins anew
        player.Select(2, now);
        const std::uint64_t changes = player.SoundChanges();
        player.PassOver(now);
        EXPECT_NE(player.SoundChanges(), changes);
        EXPECT_EQ(player.State(), repeat == E_DEVMGR_IPOD_REPEAT_NONE ? E_DEVMGR_IPOD_PLAY_STOPPED
                                                                      : E_DEVMGR_IPOD_PLAY_PLAYING);
        player.PassOver(now);
        player.PassOver(now);
        EXPECT_EQ(player.State(), E_DEVMGR_IPOD_PLAY_STOPPED);
        EXPECT_TRUE(player.CurrentSound().file.empty());
    }
}

TEST_F(PlayerTest, RepeatDecidesWhatFollowsTheEndAndASkip) {
    constexpr auto kNone = E_DEVMGR_IPOD_REPEAT_NONE;
    constexpr auto kOne = E_DEVMGR_IPOD_REPEAT_ONE;
    constexpr auto kAll = E_DEVMGR_IPOD_REPEAT_ALL;
    struct Case {
        std::optional<DevMgrSkip> skip;  // none: the track comes to its end
        DevMgrRepeatMode repeat;
        std::uint32_t start;
        std::chrono::milliseconds played;
        std::uint32_t track;
        std::string_view events;
    };
    const Case cases[] = {
        {{}, kNone, 0, 10s, 1, "play-track-changed"},
        {{}, kNone, 2, 10s, 0, "play-stopped"},
        {{}, kOne, 0, 10s, 0, "play-track-changed"},
        {{}, kOne, 2, 10s, 2, "play-track-changed"},
        {{}, kAll, 0, 10s, 1, "play-track-changed"},
        {{}, kAll, 2, 10s, 0, "play-track-changed"},
        {DEV_MGR_SKIP_NEXT, kNone, 0, 1s, 1, "play-track-changed"},
        {DEV_MGR_SKIP_NEXT, kNone, 2, 1s, 0, "play-stopped"},
        {DEV_MGR_SKIP_NEXT, kAll, 2, 1s, 0, "play-track-changed"},
        {DEV_MGR_SKIP_NEXT, kOne, 0, 1s, 1, "play-track-changed"},
        {DEV_MGR_SKIP_PREVIOUS, kNone, 2, 3s, 1, "play-track-changed"},
        {DEV_MGR_SKIP_PREVIOUS, kNone, 2, 3001ms, 2, "play-time"},
        {DEV_MGR_SKIP_PREVIOUS, kNone, 0, 1s, 0, "play-time"},
        {DEV_MGR_SKIP_PREVIOUS, kAll, 0, 1s, 2, "play-track-changed"},
        {DEV_MGR_SKIP_PREVIOUS, kAll, 0, 4s, 0, "play-time"},
    };
    for (const Case& c : cases) {
        player.SetRepeat(c.repeat);
        Start(3, c.start);
        After(c.played - 1ms);
        const std::string end = After(1ms);
        EXPECT_EQ(c.skip ? player.Skip(*c.skip, now) : DEV_MGR_SUCCESS, DEV_MGR_SUCCESS);
        EXPECT_EQ(c.skip ? Events() : end, c.events);
        EXPECT_EQ(Track(), c.track);
        EXPECT_EQ(player.ElapsedMs(now), 0U);
    }
}

TEST_F(PlayerTest, SeeksSeveralTimesAsFastAndStopsAtTheEnds) {
    Start(2, 1);
    After(1s);
    EXPECT_EQ(player.StartSeek(DEV_MGR_SEEK_FORWARD, now), DEV_MGR_SUCCESS);
    EXPECT_EQ(After(500ms), "fast-fw-started");
    EXPECT_EQ(player.ElapsedMs(now), 5000U);
    player.StartSeek(DEV_MGR_SEEK_REWIND, now);
    EXPECT_EQ(After(625ms), "fast-rw-started fast-fw-rw-stopped");
    EXPECT_EQ(player.ElapsedMs(now), 0U);
    Start(2);
    player.StartSeek(DEV_MGR_SEEK_FORWARD, now);
    After(1500ms);
    EXPECT_EQ(Track(), 1U);
    EXPECT_EQ(player.ElapsedMs(now), 2000U);
}

TEST_F(PlayerTest, ShufflingTracksKeepsTheCurrentOneAndEveryOther) {
    Start(24, 5);
    player.SetShuffle(E_DEVMGR_IPOD_SHUFFLE_TRACKS, now);
    EXPECT_EQ(Events(), "shuffle-setting=1 play-context-setting=24");
    EXPECT_EQ(Track(), 5U);
    const auto shuffled = Order();
    EXPECT_FALSE(std::is_sorted(shuffled.begin(), shuffled.end()));
    EXPECT_EQ(std::set(shuffled.begin(), shuffled.end()).size(), 24U);
    player.Skip(DEV_MGR_SKIP_NEXT, now);
    player.SetShuffle(E_DEVMGR_IPOD_SHUFFLE_NONE, now);
    EXPECT_EQ(Track(), shuffled[1]);
    EXPECT_EQ(player.Queue().Position(), shuffled[1]);
    // Albums stay together.
    player.SetShuffle(E_DEVMGR_IPOD_SHUFFLE_ALBUMS, now);
    const auto order = Order();
    EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
    for (std::size_t i = 0; i < order.size(); i += 3) {
        EXPECT_EQ(order[i] % 3, 0U);
        EXPECT_EQ(order[i + 1], order[i] + 1);
        EXPECT_EQ(order[i + 2], order[i] + 2);
    }
}

TEST_F(PlayerTest, WhatIsPausedStaysPaused) {
    Start(3, 1);
    After(2500ms);
    player.Pause(now);
    EXPECT_EQ(player.Skip(DEV_MGR_SKIP_NEXT, now), DEV_MGR_SUCCESS);
    EXPECT_EQ(After(20s), "play-paused play-track-changed");
    EXPECT_EQ(player.State(), E_DEVMGR_IPOD_PLAY_PAUSED);
    player.StartSeek(DEV_MGR_SEEK_FORWARD, now);
    EXPECT_EQ(After(500ms), "fast-fw-started");
    player.StartSeek(DEV_MGR_SEEK_REWIND, now);
    player.EndSeek(now);
    player.EndSeek(now);
    EXPECT_EQ(After(20s), "fast-rw-started fast-fw-rw-stopped");
    EXPECT_EQ(player.ElapsedMs(now), 4000U);
    EXPECT_EQ(player.MoveWithin(10'001ms, now), DEV_MGR_IAP_INVALID_INDEX);
    EXPECT_EQ(player.MoveWithin(10s, now), DEV_MGR_SUCCESS);
    EXPECT_EQ(After(1s), "play-time=10000");
    // Fast forward is stopped with what it runs into the end of.
    player.MoveWithin(2s, now);
    player.Play(now);
    player.StartSeek(DEV_MGR_SEEK_FORWARD, now);
    EXPECT_EQ(After(1s), "play-time=2000 play-started fast-fw-started fast-fw-rw-stopped play-stopped");
}

}  // namespace
}  // namespace DeviceSimulator::Test
