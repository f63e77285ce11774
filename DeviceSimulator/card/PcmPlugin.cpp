// An ALSA I/O plugin, PCM type "simulated": a sound card made of files that keeps real time. Each PCM is used
// by one thread at a time, as ALSA has it.
#include <alsa/asoundlib.h>
#include <alsa/pcm_external.h>
#include <poll.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <optional>
#include <vector>

#include "DeviceSimulator/card/SoundFiles.h"

namespace DeviceSimulator {
namespace {

constexpr long kMostDriftPpm = 100000;
constexpr unsigned kLeastPeriodBytes = 64 * kFrameBytes;
constexpr unsigned kMostPeriodBytes = 16384 * kFrameBytes;
constexpr unsigned kLeastPeriods = 2;
constexpr unsigned kMostPeriods = 64;
/// A converter takes its time to start, and what the program gets ready meanwhile is its margin later: a copy
/// from capture to playback would else be a gap for every period that it is late by.
constexpr std::chrono::milliseconds kPlaybackStartLatency(150);

using Clock = std::chrono::steady_clock;

class SimulatedPcm {
  public:
    explicit SimulatedPcm(snd_pcm_stream_t stream)
        : m_stream(stream),
          m_pathOfState(SoundFilePath(stream == SND_PCM_STREAM_CAPTURE ? "capture" : "playback")),
          m_timer(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
        if (IsCapture())
            m_capture.emplace(m_captureRate);
        else
            m_playback.emplace();
    }

    /// 0, or a negative errno. On success ALSA owns this object through its close callback.
    int Create(snd_pcm_t** pcm, const char* name, int mode) {
        if (IsGone())
            return -ENODEV;
        if (!m_timer.IsOpen())
            return -EMFILE;
        m_io.version = SND_PCM_IOPLUG_VERSION;
        m_io.name = "Simulated sound card";
        m_io.flags = SND_PCM_IOPLUG_FLAG_MONOTONIC;
        m_io.poll_fd = m_timer.Get();
        m_io.poll_events = POLLIN;
        m_io.callback = &Callbacks();
        m_io.private_data = this;
        if (const int failure = snd_pcm_ioplug_create(&m_io, name, m_stream, mode); failure < 0)
            return failure;
        if (const int failure = Constrain(); failure < 0) {
            m_io.private_data = nullptr;
            snd_pcm_ioplug_delete(&m_io);
            return failure;
        }
        *pcm = m_io.pcm;
        return 0;
    }

  private:
    static SimulatedPcm& Of(snd_pcm_ioplug_t* io) { return *static_cast<SimulatedPcm*>(io->private_data); }

    static const snd_pcm_ioplug_callback_t& Callbacks() {
        static const snd_pcm_ioplug_callback_t callbacks = [] {
            snd_pcm_ioplug_callback_t table{};
            table.start = [](snd_pcm_ioplug_t* io) { return Of(io).Start(); };
            table.stop = [](snd_pcm_ioplug_t* io) { return Of(io).Stop(); };
            table.pointer = [](snd_pcm_ioplug_t* io) { return Of(io).Pointer(); };
            table.transfer = [](snd_pcm_ioplug_t* io, const snd_pcm_channel_area_t* areas,
                                snd_pcm_uframes_t offset,
                                snd_pcm_uframes_t size) { return Of(io).Transfer(areas, offset, size); };
            table.close = [](snd_pcm_ioplug_t* io) {
                delete static_cast<SimulatedPcm*>(io->private_data);
                return 0;
            };
            table.hw_params = [](snd_pcm_ioplug_t* io, snd_pcm_hw_params_t*) { return Of(io).SetUp(); };
            table.prepare = [](snd_pcm_ioplug_t* io) { return Of(io).Prepare(); };
            table.poll_revents = [](snd_pcm_ioplug_t* io, pollfd*, unsigned, unsigned short* events) {
                return Of(io).TakeTick(events);
            };
            return table;
        }();
        return callbacks;
    }

    bool IsCapture() const { return m_stream == SND_PCM_STREAM_CAPTURE; }
    bool IsGone() const { return SoundFileExists(SoundFile(".gone")); }

    /// Of this direction: what is behind the first dot of the name.
    std::string SoundFile(const char* what) const {
        return m_pathOfState.empty() ? std::string() : m_pathOfState + what;
    }
    /// Somebody has asked for one; just one.
    bool HasXrun() const { return unlink(SoundFile(".xrun").c_str()) == 0; }

    int Constrain() {
        const unsigned access = SND_PCM_ACCESS_RW_INTERLEAVED;
        const unsigned format = SND_PCM_FORMAT_S16_LE;
        const std::vector<unsigned> rates = Rates();
        const int failures[] = {
            snd_pcm_ioplug_set_param_list(&m_io, SND_PCM_IOPLUG_HW_ACCESS, 1, &access),
            snd_pcm_ioplug_set_param_list(&m_io, SND_PCM_IOPLUG_HW_FORMAT, 1, &format),
            snd_pcm_ioplug_set_param_minmax(&m_io, SND_PCM_IOPLUG_HW_CHANNELS, kSoundChannels,
                                            kSoundChannels),
            snd_pcm_ioplug_set_param_list(&m_io, SND_PCM_IOPLUG_HW_RATE, static_cast<unsigned>(rates.size()),
                                          rates.data()),
            snd_pcm_ioplug_set_param_minmax(&m_io, SND_PCM_IOPLUG_HW_PERIOD_BYTES, kLeastPeriodBytes,
                                            kMostPeriodBytes),
            snd_pcm_ioplug_set_param_minmax(&m_io, SND_PCM_IOPLUG_HW_PERIODS, kLeastPeriods, kMostPeriods),
        };
        return *std::min_element(std::begin(failures), std::end(failures));
    }

    std::vector<unsigned> Rates() const {
        if (IsCapture())
            return {m_captureRate};
        std::vector<unsigned> rates{8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
        std::erase(rates, static_cast<unsigned>(ReadSoundNumber(SoundFile(".refuse"), 1, rates.back(), 0)));
        return rates;
    }

    int SetUp() {
        if (m_playback)
            m_playback->Begin(m_io.rate);
        return 0;
    }

    int Prepare() {
        if (IsGone())
            return -ENODEV;
        Stop();
        m_startPosition = m_position = m_transferred = 0;
        return 0;
    }

    int Start() {
        m_startPosition = m_position;
        const long drift = ReadSoundNumber(SoundFile(".ppm"), -kMostDriftPpm, kMostDriftPpm, 0);
        m_speed = 1 + static_cast<double>(drift) / 1'000'000;
        m_start = Clock::now() + (IsCapture() ? std::chrono::milliseconds(0) : kPlaybackStartLatency);
        m_running = true;
        // Rounded up, so that a period is over when the time is.
        return SetTimer(
            std::chrono::nanoseconds((m_io.period_size * std::nano::den + m_io.rate - 1) / m_io.rate));
    }

    int Stop() {
        m_running = false;
        return SetTimer(std::chrono::nanoseconds(0));
    }

    /// Rings once a `period`; never for 0.
    int SetTimer(std::chrono::nanoseconds period) {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(period);
        timespec time{};
        time.tv_sec = static_cast<time_t>(seconds.count());
        time.tv_nsec = static_cast<long>((period - seconds).count());
        const itimerspec timer{time, time};
        return timerfd_settime(m_timer.Get(), 0, &timer, nullptr) == 0 ? 0 : -errno;
    }

    std::uint64_t FramesSinceStart() const {
        const std::chrono::duration<double> elapsed = Clock::now() - m_start;
        return static_cast<std::uint64_t>(std::max(elapsed.count(), 0.0) * m_io.rate * m_speed);
    }

    // The card waits where the program has left it no room or no sound, and catches up afterwards: a program
    // that was late for once loses nothing. ALSA sees the position modulo the buffer, so a step of a whole
    // buffer would look like none.
    snd_pcm_sframes_t Pointer() {
        if (m_running) {
            if (HasXrun())
                return -EPIPE;
            const std::uint64_t due = m_startPosition + FramesSinceStart() - m_position;
            const std::uint64_t possible = m_transferred + (IsCapture() ? m_io.buffer_size : 0) - m_position;
            m_position += std::min({due, possible, std::uint64_t{m_io.buffer_size} - 1});
        }
        return static_cast<snd_pcm_sframes_t>(m_position % m_io.buffer_size);
    }

    snd_pcm_sframes_t Transfer(const snd_pcm_channel_area_t* areas, snd_pcm_uframes_t offset,
                               snd_pcm_uframes_t size) {
        if (IsGone())
            return -ENODEV;
        char* const samples = static_cast<char*>(areas->addr) + areas->first / 8 + offset * kFrameBytes;
        if (m_capture)
            m_capture->Read(samples, size);
        else
            m_playback->Write(samples, size);
        m_transferred += size;
        return static_cast<snd_pcm_sframes_t>(size);
    }

    int TakeTick(unsigned short* events) {
        std::uint64_t ticks = 0;
        if (read(m_timer.Get(), &ticks, sizeof ticks) < 0)
            ticks = 0;
        *events = static_cast<unsigned short>(ticks == 0 ? 0 : IsCapture() ? POLLIN : POLLOUT);
        return 0;
    }

    const snd_pcm_stream_t m_stream;
    const std::string m_pathOfState;
    const std::uint32_t m_captureRate = ReadCaptureRate();
    Descriptor m_timer;
    std::optional<CaptureFile> m_capture;
    std::optional<PlaybackFile> m_playback;
    Clock::time_point m_start{};  ///< from when on it counts frames
    double m_speed = 1;           ///< of its clock
    bool m_running = false;
    std::uint64_t m_startPosition = 0;  ///< frames the card had passed when it was last started
    std::uint64_t m_position = 0;       ///< frames the card has passed since it was prepared
    std::uint64_t m_transferred = 0;    ///< frames the program has read or written since then
    snd_pcm_ioplug_t m_io{};
};

int Open(snd_pcm_t** pcm, const char* name, snd_pcm_stream_t stream, int mode) {
    auto device = std::make_unique<SimulatedPcm>(stream);
    const int failure = device->Create(pcm, name, mode);
    if (failure == 0)
        device.release();  // To the close callback.
    return failure;
}

}  // namespace
}  // namespace DeviceSimulator

extern "C" {

// What ALSA calls for the type "simulated". The devices have no settings of their own, so the rest of the
// definition (the arguments of hw) is left unread.
SND_PCM_PLUGIN_DEFINE_FUNC(simulated) {
    static_cast<void>(root);
    static_cast<void>(conf);
    try {
        return DeviceSimulator::Open(pcmp, name, stream, mode);
    } catch (...) {
        return -ENOMEM;
    }
}

SND_PCM_PLUGIN_SYMBOL(simulated)
}
