// A manager over the simulated player, with what it reports and logs at hand.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DeviceSimulator/Simulator.h"
#include "IpodService/IIpodNotifications.h"
#include "IpodService/IpodManager.h"

/// Reports as short texts, for example "connected 1", in the order in which they came.
class RecordedNotifications : public IIpodNotifications {
  public:
    void OnTrackInfo(bool isPlaying, const NowPlayingPosition& position, const TrackMetadata& metadata,
                     const TrackTimes& times) override;
    void OnTrackTimes(const TrackTimes& times) override;
    void OnTrackTime(u32 time) override;
    void OnConnection(bool connected) override;
    void OnAlbumArt(const std::string& albumArt, u32 width, u32 height, int trackIndex) override;
    void OnTrackPaused(bool paused) override;

    std::vector<std::string> All() const;
    /// What came since the last time it was asked.
    std::vector<std::string> Take();

  private:
    void Record(std::string text);

    mutable std::mutex m_mutex;
    std::vector<std::string> m_texts;
};

/// The log, from construction on, in a file of its own.
class CapturedLog {
  public:
    explicit CapturedLog(const std::filesystem::path& file);
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    /// Everything written since the last time it was asked, each entry's message behind its level in
    /// brackets, for example "[WARN ] Return from ...\n".
    std::string Take();

  private:
    std::filesystem::path m_file;
    std::size_t m_taken = 0;
};

/// A folder of the test's own, gone with it.
class ScratchFolder {
  public:
    ScratchFolder();
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::filesystem::path& Path() const { return m_path; }
    /// Makes an empty file in `folder` (below the scratch folder).
    void Touch(const std::string& name) const;

  private:
    std::filesystem::path m_path;
};

/// Takes the place of everything that needs a moment in the player: devices are there at once, databases are
/// built at once.
class ManagerTest : public testing::Test {
  protected:
    ManagerTest();
    ~ManagerTest() override;

    /// Plugs a device in and steps the manager until it can browse.
    u32 Connect(u32 type = 14);
    /// Steps the connection until `state` is reached; false after too many steps.
    bool StepUntil(ConnectionState state);
    /// One event, handled before this returns.
    void Fire(std::initializer_list<u32> words, std::initializer_list<std::string_view> texts = {});
    /// The names of the device-manager calls since the last time it was asked, with their arguments behind
    /// the two handles: "eDevMgriPodSetMaxCurrent(1000)".
    std::vector<std::string> TakeCalls();

    DeviceSimulator::Simulator& m_simulator = DeviceSimulator::Simulator::Instance();
    ScratchFolder m_scratch;
    CapturedLog m_log;
    RecordedNotifications m_notifications;
    std::unique_ptr<IpodManager> m_manager;
};
