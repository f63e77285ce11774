// The events of the device-manager interface by name, for those who write them by hand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace DeviceSimulator {

/// The number of an event by the interface's name of it ("DEV_MGR_EVENT_PLAY_TIME") or by its word
/// ("play-time"): the name in small letters without DEV_MGR_, EVENT_ and IPOD_, with "-" for "_".
std::optional<std::uint32_t> FindEvent(std::string_view name);

/// An event's word; empty when there is no such event.
std::string EventWord(std::uint32_t id);

}  // namespace DeviceSimulator
