// How far the session with the device manager and its device has come.
#pragma once

#include "DeviceManager/DeviceManager.h"

enum class ConnectionState : u32 {
    Unregistered = 0,
    Registered = 1,
    Connected = 2,
    BuildingDatabase = 3,
    DatabaseComplete = 4,
    BrowseReady = 5
};
