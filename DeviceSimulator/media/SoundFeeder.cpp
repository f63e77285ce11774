#include "DeviceSimulator/media/SoundFeeder.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;
/// How far what is written runs ahead of the player's clock: what this program may be late by without a gap.
constexpr std::chrono::milliseconds kLead = 70ms;
/// Above it nobody reads, or the reader was held up: then what is old goes.
constexpr std::chrono::milliseconds kMostUnread = 100ms;
/// Below it the reader has caught up with what was thrown away before: then the lead is built anew.
constexpr std::chrono::milliseconds kLeastUnread = 20ms;
/// What the sound may lag behind the clock by rather than begin behind its beginning.
constexpr std::chrono::milliseconds kMostLag = 150ms;

std::chrono::nanoseconds Now() {
    return std::chrono::steady_clock::now().time_since_epoch();
}

}  // namespace

void SoundFeeder::Obey(const SoundCommand& command, std::string file) {
    const bool isSameSound =
        command.track == m_command.track && command.rate == m_command.rate && file == m_file;
    m_command = command;
    m_file = std::move(file);
    m_fifo.Clear();
    if (m_file.empty() || command.rate == 0 || !OpenFifo()) {
        m_decoder.reset();
        return;
    }
    if (!isSameSound || !m_decoder) {
        m_decoder.emplace(m_file, command.rate);
    }
    m_hasBegun = false;
    m_lag = 0;
    m_next = ToFrames(command.position);
    m_decoder->GoTo(std::max(m_next, FrameNow() - ToFrames(kMostLag)));
}

/// One for each rate: a stream that still runs at another one must not read this sound, and one that has been
/// opened anew is to find it, whichever comes first.
bool SoundFeeder::OpenFifo() {
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

void SoundFeeder::Work() {
    if (m_decoder) {
        m_decoder->HandleMessages();
    }
    if (IsMoving() && HasBegun()) {
        Feed();
    }
}

/// From its first frame on where that is decoded soon, else wherever the clock is by then.
bool SoundFeeder::HasBegun() {
    if (!m_hasBegun) {
        const std::int64_t late = FrameNow() - m_next;
        const bool isSoon = late < ToFrames(kMostLag);
        m_hasBegun = !isSoon || !m_decoder->Frames(m_next, 1).empty();
        m_lag = isSoon ? late : 0;
    }
    return m_hasBegun;
}

void SoundFeeder::Feed() {
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

std::optional<SoundFeeder::News> SoundFeeder::TakeNews() {
    if (m_decoder && !m_decoder->Failure().empty()) {
        News news{m_command.track, m_decoder->Failure()};
        m_decoder.reset();
        return news;
    }
    const bool isNew = m_hasSounded && !std::exchange(m_isToldOfSound, true);
    return isNew ? std::optional(News{m_command.track, {}}) : std::nullopt;
}

std::int64_t SoundFeeder::FrameNow() const {
    const auto moved = m_command.isMoving != 0 ? std::max(Now() - m_command.since, 0ns) : 0ns;
    return ToFrames(m_command.position + moved);
}

std::int64_t SoundFeeder::ToFrames(std::chrono::nanoseconds time) const {
    // Seconds and the rest apart: nanoseconds times the rate would overflow after two days.
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time);
    return seconds.count() * m_command.rate +
           (time - seconds).count() * m_command.rate / kNanosecondsPerSecond;
}

}  // namespace DeviceSimulator
