// A FIFO that the simulated sound card captures from, at its writing end.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// A frame of S16LE stereo sound as it lies in memory.
using SoundFrame = std::uint32_t;

/// Made when nothing is at its path. What is there and no FIFO stays as it is; nothing is written then. Never
/// blocks. One thread.
class SoundFifo {
  public:
    /// Closes the one before, and looks anew at what is at `path`. 0, or an errno: EEXIST where what is there
    /// is no FIFO, or may not be opened.
    int Open(const std::string& path);
    void Close() { m_file.Close(); }

    /// Frames that nobody has read yet.
    std::size_t Unread() const;
    /// As many frames of `frames` as it takes.
    std::size_t Write(std::span<const SoundFrame> frames);
    /// Takes the `count` oldest frames back.
    void Drop(std::size_t count);
    void Clear() { Drop(Unread()); }

  private:
    Descriptor m_file;
};

}  // namespace DeviceSimulator
