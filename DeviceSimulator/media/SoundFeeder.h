// Keeps the FIFO that the simulated sound card captures from a little ahead of the player's clock.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "DeviceSimulator/helper/MediaProtocol.h"
#include "DeviceSimulator/media/SoundFifo.h"
#include "DeviceSimulator/media/TrackDecoder.h"

namespace DeviceSimulator {

/// One thread.
class SoundFeeder {
  public:
    /// `folder`: the simulated sound card's.
    explicit SoundFeeder(std::string folder) : m_folder(std::move(folder)) {}

    /// From now on `command` holds, with that file. What of the sound before is unread is thrown away.
    void Obey(const SoundCommand& command, std::string file);
    /// Does what is due; to be called every few milliseconds while IsMoving, and when MessageFd is readable.
    void Work();
    bool IsMoving() const { return m_decoder && m_command.isMoving != 0; }
    /// -1: nothing to wait for.
    int MessageFd() const { return m_decoder ? m_decoder->MessageFd() : -1; }

    struct News {
        SoundTrack track;
        std::string failure;  ///< why it cannot be decoded and is silent; empty: it sounds
    };
    /// Of the first sound of all, and of each track that cannot be decoded; once.
    std::optional<News> TakeNews();

  private:
    std::int64_t FrameNow() const;
    std::int64_t ToFrames(std::chrono::nanoseconds time) const;
    bool HasBegun();
    void Feed();
    bool OpenFifo();

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

}  // namespace DeviceSimulator
