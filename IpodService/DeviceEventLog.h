// What the log tells of an event. Nothing here changes any state. Any thread.
#pragma once

#include "DeviceManager/DeviceManager.h"
#include "IpodService/DeviceEventView.h"

namespace DeviceEventLog {

void Name(const DeviceEventView& event);
void Playback(const DeviceEventView& event);
void Authentication(const DeviceEventView& event);
void ApplicationSession(const DeviceEventView& event);
void ApplicationName(const DeviceEventView& event);
void SessionSpace(const DeviceEventView& event);
void Charging(const DeviceEventView& event);
void Connected(const DeviceEventView& event);
void Disconnected(const DeviceEventView& event);

/// An event that means nothing to the service.
void Other(const DeviceEventView& event, u32 processHandle);

}  // namespace DeviceEventLog
