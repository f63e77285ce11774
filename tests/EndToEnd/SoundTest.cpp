// What the player plays, heard at the unit's output.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/EndToEnd/Scene.h"
#include "tests/EndToEnd/Tones.h"

namespace EndToEnd {
namespace {

namespace fs = std::filesystem;

/// As a decoder ends it, but with a signal that no sanitizer catches; returns once that is done with.
void CrashSoundProgram() {
    const auto programs = SoundPrograms();
    ASSERT_EQ(programs.size(), 1U);
    kill(programs.front(), SIGKILL);
    Require("its end", [&] { return SoundPrograms() != programs; });
}

std::ptrdiff_t CountErrors(const std::string& text) {
    const std::string errors = ReadFile("/tmp/service.stderr");
    std::ptrdiff_t count = 0;
    for (std::size_t at = errors.find(text); at != std::string::npos; at = errors.find(text, at + 1))
        ++count;
    return count;
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
    constexpr milliseconds kSoon = milliseconds{500} * TEST_TIME_SCALE;
    constexpr milliseconds kSoonAtAnotherRate = milliseconds{1200} * TEST_TIME_SCALE;
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
    scene->service.Signal(SIGKILL);
    EXPECT_TRUE(WaitUntil([] { return SoundPrograms().empty(); }));
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
    for (const char* name : {"/1.flac:", "/3.flac:"})
        EXPECT_EQ(CountErrors(std::string("cannot play /tmp/music") + name), 1) << name;
    EXPECT_EQ(scene->service.Stop(), 0);
    EXPECT_TRUE(WaitUntil([] { return SoundPrograms().empty(); }));
}

TEST_F(SoundTest, PassesOverWhatBringsTheDecoderDown) {
    MakeToneFile("1.flac", 44100, 500, 500);
    MakeToneFile("2.ogg", 48000, 700, 900);
    StartStream();
    Heard("playFirst", 500);
    CrashSoundProgram();
    WaitForTone(700);
    Heard("fastForwardSong", 0, "{'enable':true}");
    CrashSoundProgram();  // nothing sounds: it stays with the track
    scene->client.Notification("trackTimeNotification", [](const Json::Value& params) {
        return params["trackTime"].asUInt() > 20'500;
    });
    Heard("fastForwardSong", 900, "{'enable':false}");
    CrashSoundProgram();
    WaitForTone(0);
    const Json::Value status = scene->control.Exchange("{\"command\":\"status\"}\n");
    EXPECT_EQ(status["devices"][0]["player"]["state"], "stopped");
    Heard("playFirst", 500);
    EXPECT_EQ(CountErrors("cannot play /tmp/music/1.flac: the media program has ended (signal 9)"), 1);
    EXPECT_EQ(CountErrors("cannot play"), 2);
}

TEST_F(SoundTest, GivesUpASoundProgramThatDoesNotRun) {
    for (const char* name : {"1.flac", "2.flac", "3.flac"})
        MakeToneFile(name, 44100, 500, 500);
    const fs::path folder = "/tmp/broken";
    fs::create_directories(folder);
    fs::copy_file(SIMULATOR_LIBRARY, folder / "libdevicemanager.so");
    fs::copy_file(SIMULATED_PLAYER, folder / "simulated-player");
    setenv("LD_LIBRARY_PATH", folder.c_str(), 1);
    const std::string program = fs::path(SIMULATOR_LIBRARY).replace_filename("simulated-player-media");
    std::ofstream(folder / "simulated-player-media")
        << "#!/bin/sh\n[ $1 = sound ] && exit 3\nexec " << program << " $@\n";
    fs::permissions(folder / "simulated-player-media", fs::perms::owner_all);
    StartStream();
    scene->client.Result("playFirst");
    EXPECT_TRUE(WaitUntil([] { return CountErrors("no sound from now on") == 1; }));
    scene->client.Result("next");
    EXPECT_EQ(CountErrors("device simulator: the media program has ended (status 3)"), 4)
        << "no track's fault";
    unsetenv("LD_LIBRARY_PATH");
}

TEST_F(SoundTest, SoundsOnAfterXrunsOfACardThatDrifts) {
    MakeToneFile("1.flac", 44100, 500, 900);
    StartStream();
    scene->Do("{'command':'sound','ppm':20000}");
    scene->client.Result("stop");
    scene->client.Result("start");
    Heard("playFirst", 500);
    for (const std::string device : {"capture", "playback"}) {
        scene->Do("{'command':'sound','xrun':'" + device + "'}");
        Require("the xrun", [&] { return !fs::exists("/tmp/sound/" + device + ".xrun"); });
        WaitForTone(500);
    }
    Heard("pause", 0);
    Heard("play", 500);
}

TEST_F(SoundTest, FallsSilentAtARateThatTheCardRefusesAndSoundsAtTheNext) {
    MakeToneFile("1.flac", 44100, 500, 500);
    MakeToneFile("2.flac", 48000, 700, 700);
    StartStream();
    scene->Do("{'command':'sound','refuse':48000}");
    Heard("playFirst", 500);
    scene->client.Result("next");
    EXPECT_TRUE(WaitUntil([] { return ReadFile(kLogPath).find("Error: ") != std::string::npos; }));
    Heard("previous", 500);
    scene->Do("{'command':'sound','refuse':0}");
    Heard("next", 700);
}

TEST_F(SoundTest, NamesAFolderThatIsMissing) {
    MakeToneFile("1.flac", 44100, 500, 500);
    fs::remove_all("/tmp/sound");
    StartStream();
    scene->client.Result("playFirst");
    EXPECT_TRUE(
        WaitUntil([] { return CountErrors("for want of a FIFO at /tmp/sound/capture-44100.pcm") == 1; }));
}

}  // namespace
}  // namespace EndToEnd
