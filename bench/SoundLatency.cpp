// How soon the player's buttons are heard, through the service, its pipeline and the simulated sound card. In
// the sandbox, as it runs the service:
//
//     tests/EndToEnd/sandbox.sh <build folder>/bench/bench_sound_latency [TIMES]
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <vector>

#include "tests/EndToEnd/Scene.h"
#include "tests/EndToEnd/Tones.h"

namespace EndToEnd {
namespace {

constexpr int kFirst = 500;   // Hz, of the first track
constexpr int kSecond = 700;  // at the same sample rate
constexpr int kThird = 1100;  // at another one

class Latencies {
  public:
    explicit Latencies(const char* what) : m_what(what) {}
    ~Latencies() {
        std::sort(m_times.begin(), m_times.end());
        std::printf("%s: median %lld ms, longest %lld ms of %zu\n", m_what, Ms(m_times[m_times.size() / 2]),
                    Ms(m_times.back()), m_times.size());
    }
    Latencies(const Latencies&) = delete;
    Latencies& operator=(const Latencies&) = delete;

    void Measure(Client& client, const char* method, double hertz) {
        const Clock::time_point begin = Clock::now();
        client.Result(method);
        WaitForTone(hertz);
        m_times.push_back(std::chrono::duration_cast<milliseconds>(Clock::now() - begin) + kOutputBuffer);
    }

  private:
    static long long Ms(milliseconds time) { return static_cast<long long>(time.count()); }

    const char* m_what;
    std::vector<milliseconds> m_times;
};

void Run(int times) {
    SetUpSound();
    MakeToneFile("1.mp3", 44100, kFirst, kFirst);
    MakeToneFile("2.flac", 44100, kSecond, kSecond);
    MakeToneFile("3.ogg", 48000, kThird, kThird);
    Scene scene;
    scene.PlugPlayer();
    scene.client.Result("start");
    Latencies first("playFirst, mp3, from 48 to 44.1 kHz");
    Latencies pause("pause");
    Latencies play("play");
    Latencies next("next, flac, 44.1 kHz as before");
    Latencies nextRate("next, ogg, from 44.1 to 48 kHz");
    for (int i = 0; i < times; ++i) {
        first.Measure(scene.client, "playFirst", kFirst);
        pause.Measure(scene.client, "pause", 0);
        play.Measure(scene.client, "play", kFirst);
        next.Measure(scene.client, "next", kSecond);
        nextRate.Measure(scene.client, "next", kThird);
    }
}

}  // namespace
}  // namespace EndToEnd

int main(int argc, char** argv) {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr) {
        std::fprintf(stderr, "run this through tests/EndToEnd/sandbox.sh\n");
        return 2;
    }
    constexpr int kTimes = 20;
    try {
        EndToEnd::Run(argc > 1 ? std::max(std::atoi(argv[1]), 1) : kTimes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
}
