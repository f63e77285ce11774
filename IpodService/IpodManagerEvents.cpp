// What events change. Runs on the device manager's callback thread: it sets flags for the server thread to
// act on, sends the time and pause notifications itself and restarts the audio stream.

#include "IpodService/Clock.h"
#include "IpodService/DeviceEventLog.h"
#include "IpodService/IpodManager.h"

namespace {

constexpr u32 kPlayContextDelayMs = 1000;
constexpr u32 kBuildingPercent = 99;  ///< above it the database is complete

}  // namespace

void IpodManager::OnDeviceManagerEvent(const DeviceEvent& record) {
    const DeviceEventView event(record);
    switch (event.Id()) {
        case DEV_MGR_EVENT_DEVICE_MANAGER_EXITED:
            LOG_INFO(" Device manager has exited. No API can be used anymore. Exiting.");
            RequestExit();
            break;
        case DEV_MGR_EVENT_DEVICE_CONNECTED:
            DeviceEventLog::Name(event);
            DeviceEventLog::Connected(event);
            break;
        case DEV_MGR_EVENT_DEVICE_DISCONNECTED:
            HandleDisconnected(event);
            break;
        case DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO:
            HandleDatabaseProgress(event);
            break;
        default:
            if (!HandlePlaybackEvent(event) && !LogDeviceEvent(event)) {
                DeviceEventLog::Other(event, m_processHandle);
            }
            break;
    }
}

bool IpodManager::HandlePlaybackEvent(const DeviceEventView& event) {
    switch (event.Id()) {
        case DEV_MGR_EVENT_PLAY_TIME:
            if (IsDeviceConnected()) {
                m_notifications->OnTrackTime(event.Word(1));
            }
            return true;
        case DEV_MGR_EVENT_PLAY_STARTED:
            m_notifications->OnTrackPaused(false);
            return true;
        case DEV_MGR_EVENT_PLAY_PAUSED:
            m_notifications->OnTrackPaused(true);
            return true;
        case DEV_MGR_EVENT_PLAY_TRACK_CHANGED:
            DeviceEventLog::Name(event);
            if (IsDeviceConnected()) {
                m_playStatusPending = true;
            }
            return true;
        case DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE:
            DeviceEventLog::Name(event);
            LOG_INFO("USB Audio sample rate changed to %d\n", event.Signed(1));
            RestartStream(event.Signed(1));
            return true;
        case DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING:
            HandlePlayContext(event);
            return true;
        default:
            return false;
    }
}

bool IpodManager::LogDeviceEvent(const DeviceEventView& event) {
    switch (event.Id()) {
        case DEV_MGR_EVENT_PAUSE_REMOVED:
        case DEV_MGR_EVENT_PLAY_STOPPED:
        case DEV_MGR_EVENT_FAST_FW_STARTED:
        case DEV_MGR_EVENT_FAST_RW_STARTED:
        case DEV_MGR_EVENT_FAST_FW_RW_STOPPED:
            DeviceEventLog::Playback(event);
            return true;
        case DEV_MGR_EVENT_AUTH_STARTED:
        case DEV_MGR_EVENT_AUTH_SUCCESS:
        case DEV_MGR_EVENT_AUTH_FAILURE:
        case DEV_MGR_EVENT_AUTH_LOCKED:
        case DEV_MGR_EVENT_AUTH_UNLOCKED:
            DeviceEventLog::Authentication(event);
            return true;
        case DEV_MGR_IPOD_APP_SESSION_OPENED:
        case DEV_MGR_IPOD_APP_SESSION_CLOSED:
        case DEV_MGR_IPOD_APP_DATA_RECEIVED:
            DeviceEventLog::ApplicationSession(event);
            return true;
        case DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME:
        case DEV_MGR_IPOD_NOW_PLAYING_APP_DISPLAY_NAME:
            DeviceEventLog::ApplicationName(event);
            return true;
        case DEV_MGR_IPOD_APP_SESSION_SPACE_AVAILABLE:
            DeviceEventLog::SessionSpace(event);
            return true;
        case DEV_MGR_IPOD_CHARGING_INFO:
            DeviceEventLog::Charging(event);
            return true;
        case DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING:
            LOG_INFO("Shuffle Setting %d\n", event.Signed(1));
            return true;
        case DEV_MGR_EVENT_IPOD_REPEAT_SETTING:
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
    if (type != DEV_MGR_DEVICE_TYPE_HUB && type != DEV_MGR_DEVICE_TYPE_UNKNOWN &&
        event.Word(2) == m_deviceHandle) {
        m_closePending = true;
    }
}

void IpodManager::HandlePlayContext(const DeviceEventView& event) {
    DeviceEventLog::Name(event);
    LOG_INFO("Play Context Changed.  Total current items %d\n", event.Signed(1));
    if (!IsDeviceConnected()) {
        return;
    }
    m_playStatusPending = true;
    m_playStatusDeadlineMs = NowMs() + kPlayContextDelayMs;
}

void IpodManager::HandleDatabaseProgress(const DeviceEventView& event) {
    LOG_INFO("Database is getting build Percentage Completion =%d\n", event.Signed(1));
    if (event.Word(1) > kBuildingPercent) {
        m_connectionState = ConnectionState::DatabaseComplete;
    }
}
