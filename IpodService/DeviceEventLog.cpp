#include "IpodService/DeviceEventLog.h"

#include "IpodService/DeviceConnectionLog.h"
#include "IpodService/DeviceManagerNames.h"
#include "IpodService/LogText.h"
#include "ServiceUtil/Logger.h"

namespace {

void LogSessionData(const DeviceEventView& event) {
    LOG_INFO("Received Data from iPod:[sessionID] : %d\n", event.Signed(4));
    LOG_INFO("Data length is                      : %d\n", event.Signed(3));
    LOG_INFO("The X coordinate is                 : %d\n", event.BigEndian16(2));
    LOG_INFO("The Y coordinate is                 : %d\n", event.BigEndian16(0));
}

void LogName(const DeviceEventView& event) {
    LOG_INFO("Event is %s\n", EventName(event.Id()));
}

void LogOther(const DeviceEventView& event, u32 processHandle) {
    LOG_INFO("Event from process handle %d\n", static_cast<int>(processHandle));
    LogName(event);
}

void LogPlayback(const DeviceEventView& event) {
    LogName(event);
    LOG_INFO("Playback related event from device with device handle %d\n\n", event.Signed(5));
}

void LogAuthentication(const DeviceEventView& event) {
    LogName(event);
    LOG_INFO("Authentication related event for device with device handle %d, Node = %s\n\n", event.Signed(5),
             LogText(event.Text(0)).c_str());
    if (event.Id() == DEV_MGR_EVENT_AUTH_LOCKED) {
        LOG_INFO("Auth Locked\n");
    } else if (event.Id() == DEV_MGR_EVENT_AUTH_UNLOCKED) {
        LOG_INFO("Auth Unlocked\n");
    }
}

void LogApplicationSession(const DeviceEventView& event) {
    LOG_INFO("Application Support related event for device %d\n", event.Signed(5));
    if (event.Id() == DEV_MGR_IPOD_APP_SESSION_OPENED) {
        LOG_INFO("Session Opened:[sessionID] - %d\n", event.Signed(4));
    } else if (event.Id() == DEV_MGR_IPOD_APP_SESSION_CLOSED) {
        LOG_INFO("Session Closed:[sessionID] - %d\n", event.Signed(4));
    }
    if (event.Id() != DEV_MGR_IPOD_APP_DATA_RECEIVED) {
        LOG_INFO("The protocol string:[%s]\n", LogText(event.Text(0)).c_str());
    }
    if (event.Id() != DEV_MGR_IPOD_APP_SESSION_CLOSED) {
        LogSessionData(event);
    }
}

void LogApplicationName(const DeviceEventView& event) {
    const char* kind = event.Id() == DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME ? "Bundle" : "Display";
    LOG_INFO("NowPlayingApplication%sName event received from connected iPod device %d\n", kind,
             event.Signed(5));
    LOG_INFO("NowPlayingApplication%sName is %s\n\n\n", kind, LogText(event.Text(0)).c_str());
}

void LogSessionSpace(const DeviceEventView& event) {
    LOG_INFO("SessionSpaceAvailable event received from connected iPod device %d\n", event.Signed(5));
    LOG_INFO("Session space is now available for session ID %d\n\n\n", event.Signed(4));
}

void LogCharging(const DeviceEventView& event) {
    LOG_INFO("Charging Info Type %d\n", event.Signed(4));
    LOG_INFO("Charging Info value%d\n", event.Signed(5));
}

void LogPlayContext(const DeviceEventView& event) {
    LogName(event);
    LOG_INFO("Play Context Changed.  Total current items %d\n", event.Signed(1));
}

void LogSampleRate(const DeviceEventView& event) {
    LogName(event);
    LOG_INFO("USB Audio sample rate changed to %d\n", event.Signed(1));
}

}  // namespace

void DeviceEventLog::Write(const DeviceEventView& event, u32 processHandle) {
    if (!CLogger::IsWritten(LogLevel::kInfo)) {
        return;
    }
    switch (event.Id()) {
        case DEV_MGR_EVENT_DEVICE_MANAGER_EXITED:
            LOG_INFO(" Device manager has exited. No API can be used anymore. Exiting.");
            break;
        case DEV_MGR_EVENT_DEVICE_CONNECTED:
            LogName(event);
            LogConnected(event);
            break;
        case DEV_MGR_EVENT_DEVICE_DISCONNECTED:
            LogName(event);
            LogDisconnected(event);
            break;
        case DEV_MGR_EVENT_PLAY_TIME:
        case DEV_MGR_EVENT_PLAY_STARTED:
        case DEV_MGR_EVENT_PLAY_PAUSED:
            break;  // too many of them
        case DEV_MGR_EVENT_PLAY_TRACK_CHANGED:
            LogName(event);
            break;
        case DEV_MGR_EVENT_PAUSE_REMOVED:
        case DEV_MGR_EVENT_PLAY_STOPPED:
        case DEV_MGR_EVENT_FAST_FW_STARTED:
        case DEV_MGR_EVENT_FAST_RW_STARTED:
        case DEV_MGR_EVENT_FAST_FW_RW_STOPPED:
            LogPlayback(event);
            break;
        case DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE:
            LogSampleRate(event);
            break;
        case DEV_MGR_EVENT_AUTH_STARTED:
        case DEV_MGR_EVENT_AUTH_SUCCESS:
        case DEV_MGR_EVENT_AUTH_FAILURE:
        case DEV_MGR_EVENT_AUTH_LOCKED:
        case DEV_MGR_EVENT_AUTH_UNLOCKED:
            LogAuthentication(event);
            break;
        case DEV_MGR_IPOD_APP_SESSION_OPENED:
        case DEV_MGR_IPOD_APP_SESSION_CLOSED:
        case DEV_MGR_IPOD_APP_DATA_RECEIVED:
            LogApplicationSession(event);
            break;
        case DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME:
        case DEV_MGR_IPOD_NOW_PLAYING_APP_DISPLAY_NAME:
            LogApplicationName(event);
            break;
        case DEV_MGR_IPOD_APP_SESSION_SPACE_AVAILABLE:
            LogSessionSpace(event);
            break;
        case DEV_MGR_IPOD_CHARGING_INFO:
            LogCharging(event);
            break;
        case DEV_MGR_EVENT_IPOD_SHUFFLE_SETTING:
            LOG_INFO("Shuffle Setting %d\n", event.Signed(1));
            break;
        case DEV_MGR_EVENT_IPOD_REPEAT_SETTING:
            LOG_INFO("Repeat Setting %d\n", event.Signed(1));
            break;
        case DEV_MGR_EVENT_IPOD_PLAY_CONTEXT_SETTING:
            LogPlayContext(event);
            break;
        case DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO:
            LOG_INFO("Database is getting build Percentage Completion =%d\n", event.Signed(1));
            break;
        default:
            LogOther(event, processHandle);
            break;
    }
}
