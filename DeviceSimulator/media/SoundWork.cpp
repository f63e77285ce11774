#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/media/MediaWork.h"
#include "DeviceSimulator/media/SoundFifo.h"
#include "DeviceSimulator/media/TrackDecoder.h"

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;

constexpr int kTickMs = 10;
/// A decoder that holds this program up for so long will not let it go: it dies, and is started anew.
constexpr unsigned kStuckSeconds = 20;
/// How far what is written runs ahead of the player's clock: what this program may be late by without a gap.
constexpr std::chrono::milliseconds kLead = 70ms;
/// Above it nobody reads, or the reader was held up: then what is old goes.
constexpr std::chrono::milliseconds kMostUnread = 100ms;
/// Below it the reader has caught up with what was thrown away before: then the lead is built anew.
constexpr std::chrono::milliseconds kLeastUnread = 20ms;
/// What the sound may lag behind the clock by rather than begin behind its beginning.
constexpr std::chrono::milliseconds kMostLag = 150ms;

/// Keeps the FIFO that the simulated sound card captures from a little ahead of the player's clock. One
/// thread.
class SoundFeeder {
  public:
    /// `folder`: the simulated sound card's.
    SoundFeeder(int socket, std::string folder) : m_socket(socket), m_folder(std::move(folder)) {}

    /// Until the next command, or something to do.
    void Wait() const {
        std::array<pollfd, 2> ready{
            {{m_socket, POLLIN, 0}, {m_decoder ? m_decoder->MessageFd() : -1, POLLIN, 0}}};
        poll(ready.data(), ready.size(), IsMoving() ? kTickMs : -1);
    }
    /// Does what is due; to be called every few milliseconds while something sounds.
    void Work() {
        TakeCommands();
        if (m_decoder) {
            m_decoder->HandleMessages();
        }
        if (IsMoving() && HasBegun()) {
            Feed();
        }
        TellNews();
    }

  private:
    bool IsMoving() const { return m_decoder && m_command.isMoving != 0; }

    /// Each command says everything, so only the newest counts.
    void TakeCommands() {
        std::array<char, sizeof(SoundCommand) + kMostSoundText> message;
        const SoundCommand before = m_command;
        std::optional<std::string> file;
        ssize_t size = 0;
        while ((size = recv(m_socket, message.data(), message.size(), MSG_DONTWAIT)) >=
               static_cast<ssize_t>(sizeof m_command)) {
            std::memcpy(&m_command, message.data(), sizeof m_command);
            file.emplace(message.data() + sizeof m_command,
                         static_cast<std::size_t>(size) - sizeof m_command);
        }
        if (file) {
            const bool isSameSound =
                before.track == m_command.track && before.rate == m_command.rate && *file == m_file;
            if (!isSameSound) {
                m_decoder.reset();
            }
            Obey(std::move(*file));
        }
    }

    /// What of the sound before is unread is thrown away.
    void Obey(std::string file) {
        m_file = std::move(file);
        m_fifo.Clear();
        if (m_file.empty() || m_command.rate == 0 || !OpenFifo()) {
            m_decoder.reset();
            return;
        }
        if (!m_decoder) {
            m_decoder.emplace(m_file, m_command.rate);
        }
        m_hasBegun = false;
        m_lag = 0;
        m_next = ToFrames(m_command.position);
        m_decoder->GoTo(std::max(m_next, FrameNow() - ToFrames(kMostLag)));
    }

    /// One for each rate: a stream that still runs at another one must not read this sound, and one that has
    /// been opened anew is to find it, whichever comes first.
    bool OpenFifo() {
        std::error_code ignored;
        if (std::filesystem::exists(m_folder + "/capture.pcm", ignored)) {
            m_fifo.Close();  // the user's own is what the player sends
            return false;
        }
        const std::string path = m_folder + "/capture-" + std::to_string(m_command.rate) + ".pcm";
        const int error = m_fifo.Open(path);
        if (error != 0 && !std::exchange(m_isWithoutFifo, true)) {
            std::fprintf(stderr, "device simulator: no sound, for want of a FIFO at %s: %s\n", path.c_str(),
                         std::strerror(error));
        }
        return error == 0;
    }

    /// From its first frame on where that is decoded soon, else wherever the clock is by then.
    bool HasBegun() {
        if (!m_hasBegun) {
            const std::int64_t late = FrameNow() - m_next;
            const bool isSoon = late < ToFrames(kMostLag);
            m_hasBegun = !isSoon || !m_decoder->Frames(m_next, 1).empty();
            m_lag = isSoon ? late : 0;
        }
        return m_hasBegun;
    }

    void Feed() {
        const std::int64_t now = FrameNow() - m_lag;
        const auto lead = static_cast<std::size_t>(ToFrames(kLead));
        const auto unread = static_cast<std::int64_t>(m_fifo.Unread());
        if (unread > ToFrames(kMostUnread)) {
            m_fifo.Drop(static_cast<std::size_t>(unread) - lead);
        } else if (unread < ToFrames(kLeastUnread)) {
            m_fifo.Clear();
            m_next = now;
        }
        m_next = std::max(m_next, now);
        const std::span<const SoundFrame> frames = m_decoder->Frames(now, lead);
        const auto written = std::min(static_cast<std::size_t>(m_next - now), frames.size());
        const std::size_t taken = m_fifo.Write(frames.subspan(written));
        m_next += static_cast<std::int64_t>(taken);
        m_hasSounded = m_hasSounded || taken > 0;
    }

    /// Of the first sound of all, and of each track that cannot be decoded; once.
    void TellNews() {
        if (m_decoder && !m_decoder->Failure().empty()) {
            Report(m_decoder->Failure());
            m_decoder.reset();
        } else if (m_hasSounded && !std::exchange(m_isToldOfSound, true)) {
            Report({});
        }
    }

    void Report(const std::string& failure) const {
        const SoundReport report{m_command.track};
        std::string message(reinterpret_cast<const char*>(&report), sizeof report);
        message += failure.substr(0, kMostSoundText);
        send(m_socket, message.data(), message.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    std::int64_t FrameNow() const {
        const std::chrono::nanoseconds now = std::chrono::steady_clock::now().time_since_epoch();
        const auto moved = m_command.isMoving != 0 ? std::max(now - m_command.since, 0ns) : 0ns;
        return ToFrames(m_command.position + moved);
    }

    std::int64_t ToFrames(std::chrono::nanoseconds time) const {
        return static_cast<std::int64_t>(std::chrono::duration<double>(time).count() * m_command.rate);
    }

    const int m_socket;
    const std::string m_folder;
    SoundFifo m_fifo;
    bool m_isWithoutFifo = false;  // said once
    SoundCommand m_command;
    std::string m_file;
    std::optional<TrackDecoder> m_decoder;
    std::int64_t m_next = 0;  // the frame to be written next
    bool m_hasBegun = false;  // something has been written since the last command
    std::int64_t m_lag = 0;   // frames
    bool m_hasSounded = false;
    bool m_isToldOfSound = false;
};

}  // namespace

int FeedSound(int socket, const char* folder) {
    if (gst_init_check(nullptr, nullptr, nullptr) == FALSE) {
        std::fprintf(stderr, "simulated-player-media: GStreamer does not start\n");
        return 1;
    }
    SoundFeeder feeder(socket, folder);

    for (;;) {
        feeder.Wait();
        alarm(kStuckSeconds);
        feeder.Work();
        alarm(0);
    }
}

}  // namespace DeviceSimulator
