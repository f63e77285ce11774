// What the log tells of devices that come and go, behind the event's name. Any thread.
#pragma once

#include "IpodService/DeviceEventView.h"

namespace DeviceEventLog {

void LogConnected(const DeviceEventView& event);
void LogDisconnected(const DeviceEventView& event);

}  // namespace DeviceEventLog
