// What the log tells of an event. Nothing here changes any state.
#pragma once

#include "DeviceManager/DeviceManager.h"
#include "IpodService/DeviceEventView.h"

namespace DeviceEventLog {

/// Every event has its entries here, whatever it changes elsewhere. `processHandle` is the one that the event
/// came for. Any thread.
void Write(const DeviceEventView& event, u32 processHandle);

}  // namespace DeviceEventLog
