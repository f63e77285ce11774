#include "tests/IpodService/SoundCard.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numbers>

namespace {

/// S16LE stereo, 1 kHz.
std::string MakeTone(std::uint32_t rate, int seconds) {
    constexpr double kPitch = 1000;
    constexpr double kAmplitude = 12000;
    std::string tone;
    for (std::uint32_t frame = 0; frame < rate * static_cast<std::uint32_t>(seconds); ++frame) {
        const auto sample = std::lround(kAmplitude * std::sin(2 * std::numbers::pi * kPitch * frame / rate));
        for (int channel = 0; channel < 2; ++channel) {
            tone += static_cast<char>(sample & 0xFF);
            tone += static_cast<char>(sample >> 8 & 0xFF);
        }
    }
    return tone;
}

}  // namespace

bool WaitFor(const std::function<bool()>& holds, std::chrono::seconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

MainLoopThread::MainLoopThread()
    : m_loop(g_main_loop_new(nullptr, FALSE)), m_thread([this] { g_main_loop_run(m_loop); }) {}

MainLoopThread::~MainLoopThread() {
    // From within the loop: a quit before it runs would be forgotten.
    g_idle_add(
        [](gpointer loop) {
            g_main_loop_quit(static_cast<GMainLoop*>(loop));
            return G_SOURCE_REMOVE;
        },
        m_loop);
    m_thread.join();
    g_main_loop_unref(m_loop);
}

double PlayedSound::Seconds() const {
    return rate == 0 ? 0 : static_cast<double>(samples.size()) / rate;
}

PlayedSound PlayedSound::After(double seconds) const {
    const size_t skipped = std::min(samples.size(), static_cast<size_t>(seconds * rate));
    return {rate, {samples.begin() + static_cast<std::ptrdiff_t>(skipped), samples.end()}};
}

double PlayedSound::Pitch() const {
    size_t first = 0;
    size_t last = 0;
    int crossings = 0;
    for (size_t i = 1; i < samples.size(); ++i) {
        if (samples[i - 1] >= 0 || samples[i] < 0)
            continue;
        if (crossings++ == 0)
            first = i;
        last = i;
    }
    return crossings < 2 ? 0
                         : (crossings - 1) * static_cast<double>(rate) / static_cast<double>(last - first);
}

double PlayedSound::LongestSilence() const {
    size_t longest = 0;
    size_t silent = 0;
    for (std::int16_t sample : samples) {
        silent = sample == 0 ? silent + 1 : 0;
        longest = std::max(longest, silent);
    }
    return rate == 0 ? 0 : static_cast<double>(longest) / rate;
}

SoundCard::SoundCard(const std::filesystem::path& folder) : m_folder(folder) {
    setenv("ALSA_CONFIG_PATH", ALSA_CONFIG, 1);
    setenv("DEVICE_SIMULATOR_AUDIO", folder.c_str(), 1);
}

void SoundCard::PlayTone(std::uint32_t rate, int seconds) const {
    const std::string tone = MakeTone(rate, seconds);
    // A new file each time: a pipeline that still reads the old one goes on with that.
    std::filesystem::remove(m_folder / "capture.pcm");
    std::ofstream(m_folder / "capture.pcm", std::ios::binary) << tone;
    SetRate(rate);
}

std::thread SoundCard::PlayToneThroughFifo(std::uint32_t rate, int seconds) const {
    const std::filesystem::path fifo = m_folder / "capture.pcm";
    mkfifo(fifo.c_str(), 0600);
    SetRate(rate);
    // The reader may go before the writer has finished.
    std::signal(SIGPIPE, SIG_IGN);
    return std::thread([fifo, tone = MakeTone(rate, seconds)] {
        constexpr std::size_t kPartOfAFrameToo = 1001;
        std::ofstream writer(fifo, std::ios::binary);
        for (std::size_t at = 0; at < tone.size() && writer; at += kPartOfAFrameToo)
            writer << tone.substr(at, kPartOfAFrameToo) << std::flush;
    });
}

void SoundCard::SetRate(std::uint32_t rate) const {
    std::ofstream(m_folder / "capture.rate") << rate << '\n';
}

PlayedSound SoundCard::Played() const {
    constexpr size_t kHeaderBytes = 44;
    constexpr size_t kRateAt = 24;
    std::ifstream file(m_folder / "playback.wav", std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    PlayedSound sound;
    if (bytes.size() < kHeaderBytes)
        return sound;
    std::memcpy(&sound.rate, &bytes[kRateAt], sizeof sound.rate);
    for (size_t at = kHeaderBytes; at + 4 <= bytes.size(); at += 4) {
        std::int16_t left = 0;
        std::memcpy(&left, &bytes[at], sizeof left);
        sound.samples.push_back(left);
    }
    return sound;
}

bool SoundCard::WaitForSound(std::uint32_t rate, double seconds) const {
    return WaitFor([&] {
        const PlayedSound played = Played();
        return played.rate == rate && played.Seconds() >= seconds;
    });
}

void SoundCard::SetPresent(const char* name, bool present) const {
    if (present)
        std::ofstream(m_folder / name) << '\n';
    else
        std::filesystem::remove(m_folder / name);
}
