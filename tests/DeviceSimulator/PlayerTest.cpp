#include "DeviceSimulator/Player.h"

#include <gtest/gtest.h>

#include <set>

#include "FakeLibrary.h"

namespace DeviceSimulator::Test {
namespace {

using namespace std::chrono_literals;

class PlayerTest : public testing::Test {
  protected:
    /// Plays the first `count` tracks of the library.
    void Start(std::uint32_t count, std::uint32_t start = 0) {
        auto tracks = std::make_shared<ItemList>();
        for (std::uint32_t t = 0; t < count; ++t) {
            tracks->push_back(t);
        }
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
            text += (text.empty() ? "" : " ") + std::to_string(event.id);
            text += event.value != 0 ? "=" + std::to_string(event.value) : "";
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

    std::shared_ptr<FakeLibrary> library = std::make_shared<FakeLibrary>(24);
    Player player{7};
    TimePoint now{100s};
};

TEST_F(PlayerTest, TellsTheTimeOnceASecondOfTheTrack) {
    Start(6);
    EXPECT_EQ(After(999ms), "");
    EXPECT_EQ(After(1ms), "8=1000");
    EXPECT_EQ(After(2400ms), "8=2000 8=3000");
    EXPECT_EQ(player.Pause(now), kSuccess);
    EXPECT_EQ(Events(), "10");
    EXPECT_EQ(player.NextDue(), std::nullopt);
    EXPECT_EQ(After(5s), "");
    EXPECT_EQ(player.ElapsedMs(now), 3400U);
    EXPECT_EQ(player.Pause(now), kSuccess);
    EXPECT_EQ(player.Play(now), kSuccess);
    EXPECT_EQ(Events(), "9");
    EXPECT_EQ(After(600ms), "8=4000");
}

TEST_F(PlayerTest, GoesOnThroughTheQueueAndTellsTheRateOnlyWhenItDiffers) {
    Start(4, 1);
    EXPECT_EQ(Track(), 1U);
    now += 9s;
    After(0ms);
    EXPECT_EQ(After(1s), "13");
    now += 9s;
    After(0ms);
    EXPECT_EQ(After(1s), "13 17=48000");
    now += 9s;
    After(0ms);
    EXPECT_EQ(After(1s), "12");
    EXPECT_EQ(player.State(), PlayState::Stopped);
    EXPECT_EQ(player.Play(now), kSuccess);
    EXPECT_EQ(Track(), 0U);
    EXPECT_EQ(Events(), "13 17=44100 9");
}

TEST_F(PlayerTest, RepeatDecidesWhatFollowsTheEnd) {
    struct Case {
        RepeatMode repeat;
        std::uint32_t start;
        PlayState state;
        std::uint32_t track;
    };
    const Case cases[] = {
        {RepeatMode::None, 0, PlayState::Playing, 1}, {RepeatMode::None, 2, PlayState::Stopped, 0},
        {RepeatMode::One, 0, PlayState::Playing, 0},  {RepeatMode::One, 2, PlayState::Playing, 2},
        {RepeatMode::All, 0, PlayState::Playing, 1},  {RepeatMode::All, 2, PlayState::Playing, 0},
    };
    for (const Case& c : cases) {
        player.SetRepeat(c.repeat);
        Start(3, c.start);
        After(10s + 500ms);
        EXPECT_EQ(player.State(), c.state);
        EXPECT_EQ(Track(), c.track);
        EXPECT_EQ(player.ElapsedMs(now), c.state == PlayState::Playing ? 500U : 0U);
    }
}

TEST_F(PlayerTest, SkipsByPositionRepeatAndQueue) {
    struct Case {
        SkipDirection direction;
        RepeatMode repeat;
        std::uint32_t start;
        std::chrono::milliseconds played;
        std::uint32_t track;
        std::string_view events;
    };
    using enum SkipDirection;
    const Case cases[] = {
        {Next, RepeatMode::None, 0, 1s, 1, "13"},     {Next, RepeatMode::None, 2, 1s, 0, "12"},
        {Next, RepeatMode::All, 2, 1s, 0, "13"},      {Next, RepeatMode::One, 0, 1s, 1, "13"},
        {Previous, RepeatMode::None, 2, 3s, 1, "13"}, {Previous, RepeatMode::None, 2, 3001ms, 2, "8"},
        {Previous, RepeatMode::None, 0, 1s, 0, "8"},  {Previous, RepeatMode::All, 0, 1s, 2, "13"},
        {Previous, RepeatMode::All, 0, 4s, 0, "8"},
    };
    for (const Case& c : cases) {
        player.SetRepeat(c.repeat);
        Start(3, c.start);
        After(c.played);
        EXPECT_EQ(player.Skip(c.direction, now), kSuccess);
        EXPECT_EQ(Events(), c.events);
        EXPECT_EQ(Track(), c.track);
        EXPECT_EQ(player.ElapsedMs(now), 0U);
    }
}

TEST_F(PlayerTest, SkippingWhilePausedStaysPaused) {
    Start(3);
    player.Pause(now);
    EXPECT_EQ(player.Skip(SkipDirection::Next, now), kSuccess);
    EXPECT_EQ(Events(), "10 13");
    EXPECT_EQ(player.State(), PlayState::Paused);
    EXPECT_EQ(After(20s), "");
}

TEST_F(PlayerTest, SeeksSeveralTimesAsFast) {
    Start(3);
    After(1s);
    EXPECT_EQ(player.StartSeek(SeekDirection::Forward, now), kSuccess);
    EXPECT_EQ(After(500ms), "14");
    EXPECT_EQ(player.ElapsedMs(now), 5000U);
    EXPECT_EQ(player.StartSeek(SeekDirection::Rewind, now), kSuccess);
    EXPECT_EQ(After(250ms), "15");
    EXPECT_EQ(player.ElapsedMs(now), 3000U);
    player.EndSeek(now);
    player.EndSeek(now);
    EXPECT_EQ(Events(), "16");
    EXPECT_EQ(After(1s), "8=4000");
}

TEST_F(PlayerTest, SeekingStopsAtTheEnds) {
    Start(2, 1);
    player.Pause(now);
    player.StartSeek(SeekDirection::Rewind, now);
    EXPECT_EQ(After(0ms), "10 15 16");
    EXPECT_EQ(player.State(), PlayState::Paused);
    player.Play(now);
    player.StartSeek(SeekDirection::Forward, now);
    EXPECT_EQ(After(1250ms), "9 14 8=8000 16 12");
    EXPECT_EQ(player.State(), PlayState::Stopped);
    Start(2);
    player.StartSeek(SeekDirection::Forward, now);
    After(1500ms);
    EXPECT_EQ(Track(), 1U);
    EXPECT_EQ(player.ElapsedMs(now), 2000U);
    EXPECT_EQ(player.State(), PlayState::FastForward);
}

TEST_F(PlayerTest, StoppedItRefusesWhatNeedsATrack) {
    EXPECT_EQ(player.Play(now), kInStopState);
    EXPECT_EQ(player.Select(0, now), kInvalidIndex);
    Start(2);
    player.Stop(now);
    EXPECT_EQ(player.Pause(now), kInStopState);
    EXPECT_EQ(player.Skip(SkipDirection::Next, now), kInStopState);
    EXPECT_EQ(player.StartSeek(SeekDirection::Forward, now), kInStopState);
    EXPECT_EQ(Events(), "12");
    EXPECT_EQ(player.Select(2, now), kInvalidIndex);
    EXPECT_EQ(player.Select(1, now), kSuccess);
    EXPECT_EQ(Track(), 1U);
}

TEST_F(PlayerTest, ShufflingTracksKeepsTheCurrentOneAndEveryOther) {
    Start(24, 5);
    player.SetShuffle(ShuffleMode::Tracks, now);
    EXPECT_EQ(Events(), "32=1 34=24");
    EXPECT_EQ(Track(), 5U);
    EXPECT_EQ(player.Queue().Position(), 0U);
    const auto shuffled = Order();
    EXPECT_FALSE(std::is_sorted(shuffled.begin(), shuffled.end()));
    EXPECT_EQ(std::set(shuffled.begin(), shuffled.end()).size(), 24U);
    player.Skip(SkipDirection::Next, now);
    EXPECT_EQ(Track(), shuffled[1]);
    player.SetShuffle(ShuffleMode::None, now);
    EXPECT_EQ(Track(), shuffled[1]);
    const auto restored = Order();
    EXPECT_TRUE(std::is_sorted(restored.begin(), restored.end()));
    EXPECT_EQ(player.Queue().Position(), shuffled[1]);
}

TEST_F(PlayerTest, ShufflingAlbumsKeepsThemTogether) {
    player.SetShuffle(ShuffleMode::Albums, now);
    Start(24, 10);
    EXPECT_EQ(Track(), 10U);
    EXPECT_EQ(player.Queue().Position(), 1U);
    const auto order = Order();
    EXPECT_FALSE(std::is_sorted(order.begin(), order.end()));
    for (std::size_t i = 0; i < order.size(); i += 3) {
        EXPECT_EQ(order[i] % 3, 0U);
        EXPECT_EQ(order[i + 1], order[i] + 1);
        EXPECT_EQ(order[i + 2], order[i] + 2);
    }
}

TEST_F(PlayerTest, AtRestItIsSilentAndPaused) {
    Start(3);
    After(1500ms);
    player.Rest(now);
    EXPECT_EQ(After(60s), "");
    EXPECT_EQ(player.ElapsedMs(now), 1500U);
    player.Play(now);
    player.Skip(SkipDirection::Next, now);
    EXPECT_EQ(Events(), "9 13 17=44100");
}

}  // namespace
}  // namespace DeviceSimulator::Test
