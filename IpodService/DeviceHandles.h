// The handles under which the device manager knows this process and its open device.
#pragma once

#include <atomic>

#include "DeviceManager/DeviceManager.h"
#include "ServiceUtil/ThreadRole.h"

/// Written by the server thread; the callback thread reads them to tell which events are its own.
class DeviceHandles {
  public:
    /// 0 before registration. Any thread.
    u32 Process() const { return m_processHandle; }
    /// 0: no device is open. Any thread.
    u32 Device() const { return m_deviceHandle; }
    bool IsDeviceOpen() const { return Device() != 0; }

    void SetDevice(u32 handle) REQUIRES(kServerThread) { m_deviceHandle = handle; }

    /// From here to EndRegistering an event under a handle that nobody has is this process's own: the device
    /// manager may send events before the call that tells the handle has returned.
    void BeginRegistering() REQUIRES(kServerThread) { m_isRegistering = true; }
    /// `handle` is 0 when the registration failed.
    void EndRegistering(u32 handle) REQUIRES(kServerThread);

    /// Whether events under `processHandle`, which nobody has, are this process's own. Any thread.
    bool Claim(u32 processHandle);

  private:
    std::atomic<u32> m_processHandle{0};
    std::atomic<u32> m_deviceHandle{0};
    std::atomic<bool> m_isRegistering{false};
};

inline void DeviceHandles::EndRegistering(u32 handle) {
    m_processHandle = handle;
    m_isRegistering = false;
}

inline bool DeviceHandles::Claim(u32 processHandle) {
    u32 none = 0;
    return m_isRegistering && m_processHandle.compare_exchange_strong(none, processHandle);
}
