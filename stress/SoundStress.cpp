// "sound_stress [CALLS] [SEED]", inside the sandbox: so many random calls of the player's buttons over a
// folder of good and damaged files while the stream starts and stops and the sound program is killed now and
// then. The service must answer every call, still sound afterwards, keep no descriptor and no process, and
// end in order.

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "tests/EndToEnd/Scene.h"
#include "tests/EndToEnd/Tones.h"

namespace EndToEnd {
namespace {

namespace fs = std::filesystem;

struct Call {
    const char* method;
    const char* params;
};

constexpr Call kCalls[] = {
    {"play", "null"},
    {"pause", "null"},
    {"playPause", "null"},
    {"next", "null"},
    {"next", "null"},
    {"previous", "null"},
    {"playFirst", "null"},
    {"fastForwardSong", "{'enable':true}"},
    {"fastForwardSong", "{'enable':false}"},
    {"rewindSong", "{'enable':true}"},
    {"rewindSong", "{'enable':false}"},
    {"setRepeatMode", "{'mode':'all'}"},
    {"setRepeatMode", "{'mode':'one'}"},
    {"enableShuffle", "{'enable':true}"},
    {"enableShuffle", "{'enable':false}"},
    {"start", "null"},
    {"stop", "null"},
};

void Write(const std::string& name, const std::string& content) {
    std::ofstream(kMusicFolder + name, std::ios::binary) << content;
}

/// Of each good file ones that end early, ones with holes of noise, and some that never were music.
void MakeMusic(std::mt19937& random) {
    SetUpSound();
    MakeToneFile("good.mp3", 44100, 500, 500);
    MakeToneFile("good.flac", 48000, 500, 500);
    MakeToneFile("good.ogg", 32000, 500, 500);
    MakeToneFile("good.opus", 48000, 500, 500);
    for (const char* extension : {".mp3", ".flac", ".ogg", ".opus"}) {
        const std::string good = ReadFile(kMusicFolder + std::string("good") + extension);
        for (const std::size_t size : {good.size() / 2, std::size_t{5000}, std::size_t{200}, std::size_t{0}})
            Write("short " + std::to_string(size) + extension, good.substr(0, size));
        for (int i = 0; i < 3; ++i) {
            std::string damaged = good;
            const std::size_t begin = 150 + random() % 500;
            for (std::size_t at = begin; at < damaged.size(); at += 1 + random() % 3000)
                damaged[at] = static_cast<char>(random());
            Write("noise " + std::to_string(i) + extension, damaged);
        }
        std::string rubbish(100'000, '\0');
        std::generate(rubbish.begin(), rubbish.end(), [&] { return static_cast<char>(random()); });
        Write("rubbish" + std::string(extension), rubbish);
    }
}

/// Kills one time in a hundred what decodes, as a decoder may.
void MayKill(std::mt19937& random) {
    if (random() % 100 != 0)
        return;
    for (const pid_t program : SoundPrograms())
        kill(program, SIGKILL);
}

/// What the service holds with the stream stopped and the player paused.
std::size_t CountAtRest(Scene& scene) {
    scene.client.Result("stop");
    scene.client.Result("pause");
    return scene.service.DescriptorCount();
}

int Run(int calls, unsigned seed) {
    std::mt19937 random(seed);
    MakeMusic(random);
    Scene scene;
    scene.PlugPlayer();
    scene.client.Result("start");
    scene.client.Result("playFirst");
    WaitForTone(500);
    const std::size_t before = CountAtRest(scene);
    milliseconds longest{0};
    for (int i = 0; i < calls; ++i) {
        const Call& call = kCalls[random() % std::size(kCalls)];
        const Clock::time_point begin = Clock::now();
        if (!scene.client.Call(call.method, call.params).isMember("result"))
            throw std::runtime_error(std::string("no result of ") + call.method);
        longest = std::max(longest, std::chrono::duration_cast<milliseconds>(Clock::now() - begin));
        MayKill(random);
        std::this_thread::sleep_for(milliseconds{random() % 4 == 0 ? random() % 300 : random() % 10});
    }
    // A track that is all there comes after a while.
    scene.client.Result("enableShuffle", "{'enable':false}");
    scene.client.Result("start");
    scene.client.Result("playFirst");
    WaitForTone(500);
    Require("the descriptors of before", [&] { return CountAtRest(scene) <= before; });
    const std::size_t programs = SoundPrograms().size();
    if (programs != 1 || scene.service.Stop() != 0)
        throw std::runtime_error("not in order: " + std::to_string(programs) + " sound programs");
    Require("the end of the sound program", [] { return SoundPrograms().empty(); });
    std::cout << calls << " calls, the longest " << longest.count() << " ms, " << before << " descriptors\n";
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace EndToEnd

int main(int argc, char** argv) {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr) {
        std::cerr << "run this through tests/EndToEnd/sandbox.sh\n";
        return 2;
    }
    try {
        return EndToEnd::Run(argc > 1 ? std::atoi(argv[1]) : 500,
                             argc > 2 ? static_cast<unsigned>(std::atoi(argv[2])) : 1U);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n' << EndToEnd::ReadFile("/tmp/service.stderr");
        return EXIT_FAILURE;
    }
}
