// What the player plays, heard at the unit's output.

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/EndToEnd/Scene.h"
#include "tests/EndToEnd/Tones.h"

namespace EndToEnd {
namespace {

namespace fs = std::filesystem;

/// The running sound program, or 0.
pid_t FindSoundProgram() {
    const fs::directory_iterator processes("/proc");
    const auto found = std::find_if(begin(processes), end(processes), [](const fs::directory_entry& process) {
        return ReadFile(process.path() / "comm").starts_with("simulated-playe");
    });
    return found == end(processes) ? 0 : std::stoi(found->path().filename());
}

class SoundTest : public testing::Test {
  protected:
    SoundTest() { SetUpSound(); }

    /// How long it takes from a method's call until its tone is played.
    milliseconds Heard(const char* method, double hertz, const char* params = "null") {
        const Clock::time_point begin = Clock::now();
        scene->client.Result(method, params);
        WaitForTone(hertz);
        return std::chrono::duration_cast<milliseconds>(Clock::now() - begin) + kOutputBuffer;
    }

    void StartStream() {
        scene.emplace();
        scene->PlugPlayer();
        scene->client.Result("start");
    }

    std::optional<Scene> scene;
};

TEST_F(SoundTest, FollowsThePlayer) {
    constexpr milliseconds kSoon = milliseconds{500} * END_TO_END_TIME_SCALE;
    constexpr milliseconds kSoonAtAnotherRate = milliseconds{1200} * END_TO_END_TIME_SCALE;
    MakeToneFile("1.flac", 44100, 500, 900);
    MakeToneFile("2.mp3", 44100, 700, 700);
    MakeToneFile("3.ogg", 48000, 1100, 1100);
    StartStream();
    Heard("playFirst", 500);
    EXPECT_LE(Heard("pause", 0), kSoon);
    EXPECT_LE(Heard("play", 500), kSoon);
    Heard("fastForwardSong", 0, "{'enable':true}");
    scene->client.Notification("trackTimeNotification", [](const Json::Value& params) {
        return params["trackTime"].asUInt() > 20'500;
    });
    Heard("fastForwardSong", 900, "{'enable':false}");
    Heard("next", 700);
    EXPECT_LE(Heard("next", 1100), kSoonAtAnotherRate);
    EXPECT_LE(Heard("previous", 700), kSoonAtAnotherRate);
    scene->client.Result("stop");
    scene->client.Result("next");
    Heard("start", 1100);
    // A decoder may die, and dies with the service.
    const pid_t first = FindSoundProgram();
    kill(first, SIGKILL);
    WaitForTone(0);
    Heard("previous", 700);
    EXPECT_NE(FindSoundProgram(), first);
    scene->service.Signal(SIGKILL);
    EXPECT_TRUE(WaitUntil([] { return FindSoundProgram() == 0; }));
}

TEST_F(SoundTest, PassesOverWhatCannotBeDecodedAndPlaysWhatCan) {
    const std::string kOddName = "2\xff\n'.flac";
    MakeToneFile("whole.flac", 44100, 500, 500);
    fs::rename(kMusicFolder + std::string("whole.flac"), kMusicFolder + kOddName);
    for (const char* name : {"1.flac", "3.flac"})  // their heads alone
        std::ofstream(kMusicFolder + std::string(name)) << ReadFile(kMusicFolder + kOddName).substr(0, 200);
    fs::resize_file(kMusicFolder + kOddName, fs::file_size(kMusicFolder + kOddName) / 2);
    StartStream();
    for (int i = 0; i < 2; ++i) {
        Heard("playFirst", 500);
        scene->client.Result("next");
        WaitForTone(0);
    }
    const std::string errors = ReadFile("/tmp/service.stderr");
    for (const char* name : {"/1.flac", "/3.flac"}) {
        const std::size_t found = errors.find(std::string("cannot play /tmp/music") + name);
        EXPECT_NE(found, std::string::npos) << errors;
        EXPECT_EQ(errors.find(name, found + 30), std::string::npos) << errors;
    }
    EXPECT_EQ(scene->service.Stop(), 0);
    EXPECT_TRUE(WaitUntil([] { return FindSoundProgram() == 0; }));
}

}  // namespace
}  // namespace EndToEnd
