// How soon the player's buttons are heard: from the call until the tone has left the output's buffer, of
// which 40 ms are what it takes to tell a tone.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "bench/Result.h"
#include "bench/sound/Sound.h"
#include "tests/EndToEnd/Tones.h"

namespace Bench {
namespace {

using namespace EndToEnd;

constexpr int kFirst = 500;   // Hz, of the first track
constexpr int kSecond = 700;  // at the same sample rate
constexpr int kThird = 1100;  // at another one

/// The median and the longest of a row.
class Latencies {
  public:
    explicit Latencies(std::string row) : m_row(std::move(row)) {}
    ~Latencies() {
        std::sort(m_times.begin(), m_times.end());
        Report(m_row, m_times[m_times.size() / 2]);
        Report(m_row + "-longest", m_times.back());
    }
    Latencies(const Latencies&) = delete;
    Latencies& operator=(const Latencies&) = delete;

    void Measure(Client& client, const char* method, double hertz) {
        const Clock::time_point begin = Clock::now();
        client.Result(method);
        WaitForTone(hertz);
        const std::chrono::duration<double, std::milli> time = Clock::now() - begin + kOutputBuffer;
        m_times.push_back(time.count());
    }

  private:
    std::string m_row;
    std::vector<double> m_times;
};

}  // namespace

void MeasureLatency(int times) {
    SetUpSound();
    MakeToneFile("1.mp3", 44100, kFirst, kFirst);
    MakeToneFile("2.flac", 44100, kSecond, kSecond);
    MakeToneFile("3.ogg", 48000, kThird, kThird);
    Scene scene;
    scene.PlugPlayer();
    scene.client.Result("start");
    Latencies first("ear-play-first");
    Latencies pause("ear-pause");
    Latencies play("ear-play");
    Latencies next("ear-next");
    Latencies nextRate("ear-next-rate");
    for (int i = 0; i < times; ++i) {
        first.Measure(scene.client, "playFirst", kFirst);
        pause.Measure(scene.client, "pause", 0);
        play.Measure(scene.client, "play", kFirst);
        next.Measure(scene.client, "next", kSecond);
        nextRate.Measure(scene.client, "next", kThird);
    }
}

}  // namespace Bench
