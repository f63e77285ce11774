// One device that is plugged in.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "DeviceSimulator/device/BrowseSession.h"
#include "DeviceSimulator/device/DatabaseBuild.h"
#include "DeviceSimulator/device/Player.h"
#include "DeviceSimulator/device/SimulatorOptions.h"

namespace DeviceSimulator {

/// What the device tells of itself.
struct DeviceIdentity {
    std::uint32_t type = 0;
    std::uint32_t handle = 0;
    std::uint32_t productId = 0;
    std::uint32_t vendorId = 0;
    std::string name;
    std::string node;
    std::string serial;
    std::string mountPath;  ///< of a mass storage device
    std::uint32_t hub = 0;  ///< the handle of the hub that it hangs on; 0: none
};

/// Fills in what `device` leaves out.
DeviceIdentity MakeIdentity(const DeviceDescription& device, std::uint32_t handle);

DeviceRecord MakeRecord(const DeviceIdentity& identity);

/// What the player of the device `handle` tells.
DeviceEvent MakePlayerEvent(const PlayerEvent& event, std::uint32_t handle);

struct DeviceSettings {
    std::uint8_t volumeFlag = 1;
    std::uint8_t volume = 128;
    std::uint8_t mayCharge = 1;
    std::uint16_t maxCurrent = 500;
    BatteryState battery{200, 1};
};

/// Not locked: the model's lock guards it.
struct Device {
    Device(DeviceIdentity identity, Character character, std::uint64_t instance);

    bool IsOpenedBy(std::uint32_t process) const { return openings.count(process) != 0; }
    /// Closes it for `process`; with the last one the player comes to rest, unless it plays on.
    void Close(std::uint32_t process, TimePoint now, bool playsOn = false);

    /// The records of what happened in it up to `now` and has not been told.
    std::vector<DeviceEvent> TakeEvents(TimePoint now);
    std::optional<TimePoint> NextDue() const;

    const DeviceIdentity identity;
    const Character character;
    const std::uint64_t instance;  ///< never given twice, as a handle may be
    /// The processes that have opened it, each with its browse session while it has one.
    std::map<std::uint32_t, std::optional<BrowseSession>> openings;
    Player player;
    DatabaseBuild database;
    DeviceSettings settings;
    bool isLocked = false;
    bool isAuthenticated = false;  ///< only of a player
};

}  // namespace DeviceSimulator
