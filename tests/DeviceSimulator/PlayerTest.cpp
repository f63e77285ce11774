#include "DeviceSimulator/Player.h"

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

    std::shared_ptr<const Library> library = MakeTestLibrary();
    Player player{7};
    TimePoint now{100s};
};

TEST_F(PlayerTest, TellsTheTimeOnceASecondOfTheTrackAndTheRateWhenItDiffers) {
    Start(4, 1);
    EXPECT_EQ(After(999ms), "");
    EXPECT_EQ(After(1ms), "8=1000");
    EXPECT_EQ(After(2400ms), "8=2000 8=3000");
    EXPECT_EQ(player.Pause(now), kSuccess);
    EXPECT_EQ(player.NextDue(), std::nullopt);
    EXPECT_EQ(After(5s), "10");
    EXPECT_EQ(player.ElapsedMs(now), 3400U);
    EXPECT_EQ(player.Play(now), kSuccess);
    EXPECT_EQ(After(5600ms), "9 8=4000 8=5000 8=6000 8=7000 8=8000 8=9000");
    EXPECT_EQ(After(1s), "13");
    After(9s);
    EXPECT_EQ(After(1s), "13 17=48000");
    After(9s);
    EXPECT_EQ(After(1s), "12");
    player.Play(now);
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

TEST_F(PlayerTest, PassesOverTracksUntilNoneIsLeft) {
    for (const RepeatMode repeat : {RepeatMode::None, RepeatMode::One, RepeatMode::All}) {
        player.SetRepeat(repeat);
        Start(3, 1);
        player.PassOver(now);
        EXPECT_EQ(Track(), 2U);
        After(10s);  // one that is played through: the count begins anew
        player.Select(2, now);
        const std::uint64_t changes = player.SoundChanges();
        player.PassOver(now);
        EXPECT_NE(player.SoundChanges(), changes);
        EXPECT_EQ(player.State(), repeat == RepeatMode::None ? PlayState::Stopped : PlayState::Playing);
        player.PassOver(now);
        player.PassOver(now);
        EXPECT_EQ(player.State(), PlayState::Stopped);
        EXPECT_TRUE(player.CurrentSound().file.empty());
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

TEST_F(PlayerTest, SeeksSeveralTimesAsFastAndStopsAtTheEnds) {
    Start(2, 1);
    After(1s);
    EXPECT_EQ(player.StartSeek(SeekDirection::Forward, now), kSuccess);
    EXPECT_EQ(After(500ms), "14");
    EXPECT_EQ(player.ElapsedMs(now), 5000U);
    player.StartSeek(SeekDirection::Rewind, now);
    EXPECT_EQ(After(625ms), "15 16");
    EXPECT_EQ(player.ElapsedMs(now), 0U);
    Start(2);
    player.StartSeek(SeekDirection::Forward, now);
    After(1500ms);
    EXPECT_EQ(Track(), 1U);
    EXPECT_EQ(player.ElapsedMs(now), 2000U);
}

TEST_F(PlayerTest, ShufflingTracksKeepsTheCurrentOneAndEveryOther) {
    Start(24, 5);
    player.SetShuffle(ShuffleMode::Tracks, now);
    EXPECT_EQ(Events(), "32=1 34=24");
    EXPECT_EQ(Track(), 5U);
    const auto shuffled = Order();
    EXPECT_FALSE(std::is_sorted(shuffled.begin(), shuffled.end()));
    EXPECT_EQ(std::set(shuffled.begin(), shuffled.end()).size(), 24U);
    player.Skip(SkipDirection::Next, now);
    player.SetShuffle(ShuffleMode::None, now);
    EXPECT_EQ(Track(), shuffled[1]);
    EXPECT_EQ(player.Queue().Position(), shuffled[1]);
    // Albums stay together.
    player.SetShuffle(ShuffleMode::Albums, now);
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
    EXPECT_EQ(player.Skip(SkipDirection::Next, now), kSuccess);
    EXPECT_EQ(After(20s), "10 13");
    EXPECT_EQ(player.State(), PlayState::Paused);
    player.StartSeek(SeekDirection::Forward, now);
    EXPECT_EQ(After(500ms), "14");
    player.StartSeek(SeekDirection::Rewind, now);
    player.EndSeek(now);
    player.EndSeek(now);
    EXPECT_EQ(After(20s), "15 16");
    EXPECT_EQ(player.ElapsedMs(now), 4000U);
    EXPECT_EQ(player.MoveWithin(10'001ms, now), kInvalidIndex);
    EXPECT_EQ(player.MoveWithin(10s, now), kSuccess);
    EXPECT_EQ(After(1s), "8=10000");
    // Fast forward is stopped with what it runs into the end of.
    player.MoveWithin(2s, now);
    player.Play(now);
    player.StartSeek(SeekDirection::Forward, now);
    EXPECT_EQ(After(1s), "8=2000 9 14 16 12");
}

}  // namespace
}  // namespace DeviceSimulator::Test
