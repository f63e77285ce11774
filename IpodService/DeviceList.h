// The devices that are attached.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/DeviceLink.h"

/// The device manager's list as it was read last. Server thread only.
class DeviceList {
  public:
    /// How many devices the device manager counts; 0 when it does not say.
    static u32 Count(const DeviceLink& link) REQUIRES(kServerThread);
    /// Reads the list anew.
    void Read(const DeviceLink& link) REQUIRES(kServerThread);

    /// The records that the device manager wrote.
    std::span<const DeviceRecord> Records() const REQUIRES(kServerThread) { return m_records; }
    /// Null when no record has that handle, and for the handle 0.
    const DeviceRecord* Find(u32 handle) const REQUIRES(kServerThread);
    /// The name of the last device of the last list that had any.
    const std::string& LastName() const REQUIRES(kServerThread) { return m_lastName; }

  private:
    std::vector<DeviceRecord> m_records GUARDED_BY(kServerThread);
    std::string m_lastName GUARDED_BY(kServerThread);
};
