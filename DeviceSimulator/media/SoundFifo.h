// A FIFO that the simulated sound card captures from, at its writing end.
#pragma once

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <span>
#include <string>

#include "DeviceSimulator/media/TrackDecoder.h"
#include "ServiceUtil/Descriptor.h"

namespace DeviceSimulator {

/// Made when nothing is at its path. What is there and no FIFO stays as it is; nothing is written then. Never
/// blocks. One thread.
class SoundFifo {
  public:
    /// Closes the one before, and looks anew at what is at `path`. 0, or an errno: EEXIST where what is there
    /// is no FIFO, or may not be opened.
    int Open(const std::string& path) {
        constexpr mode_t kOwnerOnly = 0600;
        const int error = mkfifo(path.c_str(), kOwnerOnly) == 0 ? ENOENT : errno;
        m_file.Close();
        if (struct stat status{}; stat(path.c_str(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
            return error;  // opening something else may have effects
        }
        // For reading as well: so that it can be emptied, and written while nobody else has it open.
        Descriptor file(open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        if (struct stat status{};
            !file.IsOpen() || fstat(file.Get(), &status) != 0 || !S_ISFIFO(status.st_mode)) {
            return error;
        }
        m_file = std::move(file);
        return 0;
    }
    void Close() { m_file.Close(); }

    /// Frames that nobody has read yet.
    std::size_t Unread() const {
        int bytes = 0;
        return m_file.IsOpen() && ioctl(m_file.Get(), FIONREAD, &bytes) == 0
                   ? static_cast<std::size_t>(bytes) / sizeof(SoundFrame)
                   : 0;
    }
    /// As many frames of `frames` as it takes.
    std::size_t Write(std::span<const SoundFrame> frames) {
        const ssize_t written = write(m_file.Get(), frames.data(), frames.size_bytes());
        return written > 0 ? static_cast<std::size_t>(written) / sizeof(SoundFrame) : 0;
    }
    /// Takes the `count` oldest frames back.
    void Drop(std::size_t count) {
        std::array<SoundFrame, 4096> dropped;
        while (count > 0) {
            const std::size_t most = std::min(count, dropped.size());
            const ssize_t got = read(m_file.Get(), dropped.data(), most * sizeof(SoundFrame));
            if (got <= 0) {
                return;
            }
            count -= std::min(count, static_cast<std::size_t>(got) / sizeof(SoundFrame));
        }
    }
    void Clear() { Drop(Unread()); }

  private:
    Descriptor m_file;
};

}  // namespace DeviceSimulator
