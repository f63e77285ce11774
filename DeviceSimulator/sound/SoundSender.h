// Tells the media program what the player lets sound, on a thread of its own.
#pragma once

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "DeviceSimulator/device/Sound.h"
#include "DeviceSimulator/helper/MediaProgram.h"
#include "DeviceSimulator/helper/MediaProtocol.h"
#include "ServiceUtil/WakeUp.h"

namespace DeviceSimulator {

/// Lives as long as the process.
class SoundSender {
  public:
    /// `onFailure` is called on the sender's thread, without a lock, for a track that cannot be decoded
    /// or has brought the media program down.
    explicit SoundSender(std::function<void(const SoundTrack&)> onFailure)
        : m_onFailure(std::move(onFailure)) {}

    /// From now on `sound` of that device holds. Any thread; waits for nothing but its own short lock.
    /// Without DEVICE_SIMULATOR_AUDIO, and until the first sound that has a file, nothing happens.
    void Tell(std::uint64_t device, const Sound& sound);

  private:
    struct Wanted {
        SoundCommand command;
        std::string file;
    };

    bool Start();
    void Run();
    bool EnsureProgram();
    void Send();
    void Receive();
    void ProgramEnded();
    void PassOver(const std::string& reason);

    const std::function<void(const SoundTrack&)> m_onFailure;

    std::mutex m_mutex;
    Wanted m_wanted;                 // guarded by m_mutex
    std::optional<WakeUp> m_wakeUp;  // made under m_mutex, before the thread starts

    // The thread's own.
    std::string m_folder;
    Wanted m_current;
    bool m_isUnsent = false;
    MediaProgram m_program;
    bool m_isMissing = false;       // the program; said once
    int m_ends = 0;                 // of the program, in a row without a sound
    Wanted m_sent;                  // what the program was last told
    std::set<std::string> m_named;  // files that cannot be decoded
};

}  // namespace DeviceSimulator
