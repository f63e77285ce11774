// "capture.pcm" as a FIFO, from its writing end.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "DeviceSimulator/UniqueFd.h"

namespace DeviceSimulator {

/// A frame of S16LE stereo sound as it lies in memory.
using SoundFrame = std::uint32_t;

/// Made when nothing is at its path. What is there and no FIFO is the user's own and stays as it is; nothing
/// is written then. Never blocks. One thread.
class SoundFifo {
  public:
    explicit SoundFifo(std::string path) : m_path(std::move(path)) {}

    /// Looks anew at what is at the path, as it may have been replaced. False when it is none of ours.
    bool Open();
    bool IsOpen() const { return static_cast<bool>(m_file); }
    /// Empties it and puts a new one at its path: who has the old one open hears silence, and what is written
    /// from now on is for those who open it from now on.
    void Replace();

    /// Frames that nobody has read yet.
    std::size_t Unread() const;
    /// As many frames of `frames` as it takes.
    std::size_t Write(std::span<const SoundFrame> frames);
    /// Takes the `count` oldest frames back.
    void Drop(std::size_t count);
    void Clear() { Drop(Unread()); }

  private:
    bool IsAtPath() const;

    const std::string m_path;
    UniqueFd m_file;
};

}  // namespace DeviceSimulator
