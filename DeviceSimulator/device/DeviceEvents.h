// The event records of devices that come and go, as each device type has them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "DeviceSimulator/device/Device.h"

namespace DeviceSimulator {

/// An event record: the words in order (missing ones 0, those beyond the sixth left out), then the texts
/// packed one after another, each with its NUL, cut where the record ends.
DeviceEvent MakeEvent(const std::vector<std::uint32_t>& words,
                      const std::vector<std::string_view>& texts = {});

/// What is told of a device that is plugged in: the connection, then the authentication of a player, which a
/// locked one does not come to the end of.
std::vector<DeviceEvent> MakeArrivalEvents(const DeviceIdentity& device, bool isLocked = false);

/// One of the authentication's events, DEV_MGR_EVENT_AUTH_...
DeviceEvent MakeAuthenticationEvent(std::uint32_t id, const DeviceIdentity& device);

DeviceEvent MakeDisconnectEvent(const DeviceIdentity& device);

}  // namespace DeviceSimulator
