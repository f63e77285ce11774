#include "IpodService/DeviceEventLog.h"

#include "IpodService/DeviceManagerNames.h"
#include "ServiceUtil/Logger.h"

namespace {

void LogSessionData(const DeviceEventView& event) {
    LOG_INFO("Received Data from iPod:[sessionID] : %d\n", event.Signed(4));
    LOG_INFO("Data length is                      : %d\n", event.Signed(3));
    LOG_INFO("The X coordinate is                 : %d\n", event.BigEndian16(2));
    LOG_INFO("The Y coordinate is                 : %d\n", event.BigEndian16(0));
}

}  // namespace

void DeviceEventLog::Name(const DeviceEventView& event) {
    LOG_INFO("Event is %s\n", EventName(event.Id()));
}

void DeviceEventLog::Other(const DeviceEventView& event, u32 processHandle) {
    LOG_INFO("Event from process handle %d\n", static_cast<int>(processHandle));
    Name(event);
}

void DeviceEventLog::Playback(const DeviceEventView& event) {
    Name(event);
    LOG_INFO("Playback related event from device with device handle %d\n\n", event.Signed(5));
}

void DeviceEventLog::Authentication(const DeviceEventView& event) {
    Name(event);
    const EventText node = event.Text(0);
    LOG_INFO("Authentication related event for device with device handle %d, Node = %.*s\n\n",
             event.Signed(5), node.Length(), node.Data());
    if (event.Id() == DEV_MGR_EVENT_AUTH_LOCKED) {
        LOG_INFO("Auth Locked\n");
    } else if (event.Id() == DEV_MGR_EVENT_AUTH_UNLOCKED) {
        LOG_INFO("Auth Unlocked\n");
    }
}

void DeviceEventLog::ApplicationSession(const DeviceEventView& event) {
    LOG_INFO("Application Support related event for device %d\n", event.Signed(5));
    const EventText protocol = event.Text(0);
    if (event.Id() == DEV_MGR_IPOD_APP_SESSION_OPENED) {
        LOG_INFO("Session Opened:[sessionID] - %d\n", event.Signed(4));
    } else if (event.Id() == DEV_MGR_IPOD_APP_SESSION_CLOSED) {
        LOG_INFO("Session Closed:[sessionID] - %d\n", event.Signed(4));
    }
    if (event.Id() != DEV_MGR_IPOD_APP_DATA_RECEIVED) {
        LOG_INFO("The protocol string:[%.*s]\n", protocol.Length(), protocol.Data());
    }
    if (event.Id() != DEV_MGR_IPOD_APP_SESSION_CLOSED) {
        LogSessionData(event);
    }
}

void DeviceEventLog::ApplicationName(const DeviceEventView& event) {
    const char* kind = event.Id() == DEV_MGR_IPOD_NOW_PLAYING_APP_BUNDLE_NAME ? "Bundle" : "Display";
    const EventText name = event.Text(0);
    LOG_INFO("NowPlayingApplication%sName event received from connected iPod device %d\n", kind,
             event.Signed(5));
    LOG_INFO("NowPlayingApplication%sName is %.*s\n\n\n", kind, name.Length(), name.Data());
}

void DeviceEventLog::SessionSpace(const DeviceEventView& event) {
    LOG_INFO("SessionSpaceAvailable event received from connected iPod device %d\n", event.Signed(5));
    LOG_INFO("Session space is now available for session ID %d\n\n\n", event.Signed(4));
}

void DeviceEventLog::Charging(const DeviceEventView& event) {
    LOG_INFO("Charging Info Type %d\n", event.Signed(4));
    LOG_INFO("Charging Info value%d\n", event.Signed(5));
}
