// A tone that the player sends without an end, and what of it comes out.
#include <time.h>

#include <atomic>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/Memory.h"
#include "bench/Result.h"
#include "bench/sound/Sound.h"
#include "bench/wire/Connection.h"
#include "bench/wire/Protocol.h"
#include "tests/EndToEnd/Tones.h"

namespace Bench {
namespace {

namespace fs = std::filesystem;
using EndToEnd::Scene;
using std::chrono::milliseconds;

constexpr int kRate = 44100;
constexpr std::size_t kPeriod = 100;  ///< frames
constexpr double kHertz = static_cast<double>(kRate) / kPeriod;
/// What the card lets a program get ready before it begins to play: as late as that, and the output runs dry.
constexpr double kMarginMs = 150;

const fs::path kSound = "/tmp/sound";

struct Frame {
    std::int16_t left;
    std::int16_t right;
    bool operator==(const Frame&) const = default;
};

/// The period divides the rate, so that each frame equals the one a period before it.
void WriteTone(std::chrono::seconds time) {
    std::vector<Frame> second;
    for (std::size_t i = 0; i < kRate; ++i) {
        const double phase = 2 * M_PI * static_cast<double>(i % kPeriod) / kPeriod;
        const auto sample = static_cast<std::int16_t>(8000 * std::sin(phase));
        second.push_back({sample, sample});
    }
    std::ofstream file(kSound / "capture.pcm", std::ios::binary);
    for (std::chrono::seconds written{0}; written < time; ++written) {
        file.write(reinterpret_cast<const char*>(second.data()),
                   static_cast<std::streamsize>(second.size() * sizeof(Frame)));
    }
}

/// Follows the file of what is played.
class Ear {
  public:
    /// Again and again, the more often the better: a look later than the sound would find none of its
    /// lateness.
    void Listen() {
        const auto now = std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
        const auto size = fs::file_size(kPath);
        if (size < m_read) {  // it has become too long, and starts over
            m_read = kHeaderBytes;
            m_period.clear();
            m_frames = kPeriod - 1;
            m_break = 0;
            m_ahead = -HUGE_VAL;
        }
        if (size < m_read) {
            return;  // not yet as far as its header
        }
        const double ahead = static_cast<double>(size) / sizeof(Frame) / kRate - now;
        m_ahead = std::max(m_ahead, ahead);
        m_latestMs = std::max(m_latestMs, (m_ahead - ahead) * 1000);
        Hear(size);
    }
    /// Where the sound does not go on as it was, at most one in a tenth of a second.
    int Breaks() const { return m_breaks; }
    /// How far it has been behind the earliest that it has been, in ms.
    double LatestMs() const { return m_latestMs; }

  private:
    static constexpr std::uintmax_t kHeaderBytes = 44;
    static inline const fs::path kPath = kSound / "playback.wav";

    void Hear(std::uintmax_t size) {
        std::vector<Frame> frames((size - m_read) / sizeof(Frame));
        m_file.seekg(static_cast<std::streamoff>(m_read));
        m_file.read(reinterpret_cast<char*>(frames.data()),
                    static_cast<std::streamsize>(frames.size() * sizeof(Frame)));
        if (!m_file) {
            throw std::runtime_error("what is played cannot be read");
        }
        m_read += frames.size() * sizeof(Frame);
        for (const Frame& frame : frames) {
            Hear(frame);
        }
    }
    void Hear(const Frame& frame) {
        ++m_frames;
        if (m_period.size() < kPeriod) {
            m_period.push_back(frame);
            return;
        }
        Frame& before = m_period[m_frames % kPeriod];
        if (frame != before && m_frames > m_break + kRate / 10) {
            m_break = m_frames;
            ++m_breaks;
        }
        before = frame;
    }

    std::ifstream m_file{kPath, std::ios::binary};
    std::uintmax_t m_read =
        fs::file_size(kPath) / sizeof(Frame) * sizeof(Frame);  // the header is whole frames
    std::vector<Frame> m_period;
    std::size_t m_frames = kPeriod - 1;
    std::size_t m_break = 0;
    int m_breaks = 0;
    double m_ahead = -HUGE_VAL;
    double m_latestMs = 0;
};

/// Clients that ask as fast as they are answered.
class Load {
  public:
    explicit Load(std::size_t clients) : m_thread([this, clients] { Ask(clients); }) {}
    ~Load() {
        m_ended = true;
        m_thread.join();
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

  private:
    void Ask(std::size_t count) const {
        const sockaddr_in service = EndToEnd::ServiceAddress(EndToEnd::kLoopback);
        const Connections clients(service, count);
        for (const Connection& client : clients.All()) {
            client.Send(kRequest);
        }
        while (!m_ended) {
            clients.Poll([](const Connection& client, std::size_t lines) {
                if (lines > 0) {
                    client.Send(kRequest);
                }
            });
        }
    }

    std::atomic<bool> m_ended{false};
    std::thread m_thread;  // last: it uses the other
};

double CpuSeconds(const Scene& scene) {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(std::stoi(scene.service.Proc().substr(std::strlen("/proc/"))), &clock) != 0 ||
        clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("the service's processor time cannot be read");
    }
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void MeasureCpu(const Scene& scene) {
    constexpr std::chrono::seconds kTime(10);
    const double before = CpuSeconds(scene);
    std::this_thread::sleep_for(kTime);
    Report("sound-cpu", (CpuSeconds(scene) - before) / static_cast<double>(kTime.count()) * 100);
}

void MeasureBreaks(std::chrono::minutes time) {
    constexpr std::size_t kClients = 8;
    constexpr milliseconds kLook(5);
    const Load load(kClients);
    Ear ear;
    for (const auto end = Clock::now() + time; Clock::now() < end;) {
        ear.Listen();
        std::this_thread::sleep_for(kLook);
    }
    Report("sound-breaks", ear.Breaks() + (ear.LatestMs() > kMarginMs ? 1 : 0));
    Report("sound-late", ear.LatestMs());
}

struct Held {
    explicit Held(const Scene& scene)
        : descriptors(static_cast<double>(scene.service.DescriptorCount())),
          threads(static_cast<double>(std::distance(fs::directory_iterator(scene.service.Proc() + "/task"),
                                                    fs::directory_iterator()))),
          kilobytes(StatusKilobytes("RssAnon:", scene.service.Proc())) {}

    double descriptors;
    double threads;
    double kilobytes;
};

void Restart(Scene& scene, int times) {
    for (int i = 0; i < times; ++i) {
        scene.client.Result("stop");
        scene.client.Result("start");
    }
}

void MeasureRestarts(Scene& scene) {
    Restart(scene, 40);
    const Held before(scene);
    Restart(scene, 200);
    const Held after(scene);
    Report("restart-descriptors", after.descriptors - before.descriptors);
    Report("restart-threads", after.threads - before.threads);
    Report("restart-memory", after.kilobytes - before.kilobytes);
}

}  // namespace

void MeasureStream(std::chrono::minutes loaded) {
    EndToEnd::SetUpSound();
    WriteTone(loaded + std::chrono::seconds(30));
    Scene scene;
    scene.PlugPlayer();
    scene.client.Result("start");
    EndToEnd::WaitForTone(kHertz);
    std::this_thread::sleep_for(milliseconds(1000));  // its beginning is no steady tone
    MeasureCpu(scene);
    MeasureBreaks(loaded);
    MeasureRestarts(scene);
}

}  // namespace Bench
