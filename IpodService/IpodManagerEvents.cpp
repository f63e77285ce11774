// What events change. Runs on the device manager's callback thread: it sets flags for the server thread to
// act on, sends the time and pause notifications itself and restarts the audio stream.

#include "IpodService/Clock.h"
#include "IpodService/DeviceEventLog.h"
#include "IpodService/EventIds.h"
#include "IpodService/IpodManager.h"

namespace {

constexpr u32 kPlayContextDelayMs = 1000;
constexpr u32 kBuildingPercent = 99;  ///< above it the database is complete

}  // namespace

void IpodManager::OnDeviceManagerEvent(const DeviceEvent& record) {
    const DeviceEventView event(record);
    switch (event.Id()) {
        case EventId::kDeviceManagerExited:
            LOG_INFO(" Device manager has exited. No API can be used anymore. Exiting.");
            RequestExit();
            break;
        case EventId::kDeviceConnected:
            DeviceEventLog::Name(event);
            DeviceEventLog::Connected(event);
            break;
        case EventId::kDeviceDisconnected:
            HandleDisconnected(event);
            break;
        case EventId::kDatabaseProgress:
            HandleDatabaseProgress(event);
            break;
        default:
            if (!HandlePlaybackEvent(event) && !LogDeviceEvent(event))
                DeviceEventLog::Other(event, m_processHandle);
            break;
    }
}

bool IpodManager::HandlePlaybackEvent(const DeviceEventView& event) {
    switch (event.Id()) {
        case EventId::kPlayTime:
            if (IsDeviceConnected())
                m_notifications->OnTrackTime(event.Word(1));
            return true;
        case EventId::kPlayStarted:
            m_notifications->OnTrackPaused(false);
            return true;
        case EventId::kPlayPaused:
            m_notifications->OnTrackPaused(true);
            return true;
        case EventId::kTrackChanged:
            DeviceEventLog::Name(event);
            if (IsDeviceConnected())
                m_playStatusPending = true;
            return true;
        case EventId::kSampleRate:
            DeviceEventLog::Name(event);
            LOG_INFO("USB Audio sample rate changed to %d\n", event.Signed(1));
            RestartStream(event.Signed(1));
            return true;
        case EventId::kPlayContext:
            HandlePlayContext(event);
            return true;
        default:
            return false;
    }
}

bool IpodManager::LogDeviceEvent(const DeviceEventView& event) {
    switch (event.Id()) {
        case EventId::kPauseRemoved:
        case EventId::kPlayStopped:
        case EventId::kFastForwardStarted:
        case EventId::kFastRewindStarted:
        case EventId::kFastForwardRewindStopped:
            DeviceEventLog::Playback(event);
            return true;
        case EventId::kAuthStarted:
        case EventId::kAuthSuccess:
        case EventId::kAuthFailure:
        case EventId::kAuthLocked:
        case EventId::kAuthUnlocked:
            DeviceEventLog::Authentication(event);
            return true;
        case EventId::kSessionOpened:
        case EventId::kSessionClosed:
        case EventId::kDataReceived:
            DeviceEventLog::ApplicationSession(event);
            return true;
        case EventId::kAppBundleName:
        case EventId::kAppDisplayName:
            DeviceEventLog::ApplicationName(event);
            return true;
        case EventId::kSessionSpaceAvailable:
            DeviceEventLog::SessionSpace(event);
            return true;
        case EventId::kChargingInfo:
            DeviceEventLog::Charging(event);
            return true;
        case EventId::kShuffleSetting:
            LOG_INFO("Shuffle Setting %d\n", event.Signed(1));
            return true;
        case EventId::kRepeatSetting:
            LOG_INFO("Repeat Setting %d\n", event.Signed(1));
            return true;
        default:
            return false;
    }
}

void IpodManager::HandleDisconnected(const DeviceEventView& event) {
    DeviceEventLog::Name(event);
    DeviceEventLog::Disconnected(event);
    const u32 type = event.Word(1);
    if (type != DeviceType::kHub && type != DeviceType::kUnknown && event.Word(2) == m_deviceHandle)
        m_closePending = true;
}

void IpodManager::HandlePlayContext(const DeviceEventView& event) {
    DeviceEventLog::Name(event);
    LOG_INFO("Play Context Changed.  Total current items %d\n", event.Signed(1));
    if (!IsDeviceConnected())
        return;
    m_playStatusPending = true;
    m_playStatusDeadlineMs = NowMs() + kPlayContextDelayMs;
}

void IpodManager::HandleDatabaseProgress(const DeviceEventView& event) {
    LOG_INFO("Database is getting build Percentage Completion =%d\n", event.Signed(1));
    if (event.Word(1) > kBuildingPercent)
        m_connectionState = ConnectionState::DatabaseComplete;
}
