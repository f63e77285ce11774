// The way to the device manager: every call of its functions goes through here.
#pragma once

#include "IpodService/DeviceCall.h"
#include "IpodService/DeviceHandles.h"
#include "ServiceUtil/ThreadRole.h"

/// The two handles, and the calls that take them. No lock is held across a call: it may wait for a callback
/// that wants the lock.
class DeviceLink {
  public:
    /// Calls a function that takes the process handle first.
    template <typename Function, typename... Arguments>
    u32 OnProcess(const DeviceCall<Function>& call, Arguments... arguments) const REQUIRES(kServerThread) {
        return MakeCall(call, m_handles.Process(), arguments...);
    }
    /// Calls a function that takes the process handle and the open device's handle first.
    template <typename Function, typename... Arguments>
    u32 OnDevice(const DeviceCall<Function>& call, Arguments... arguments) const REQUIRES(kServerThread) {
        return MakeCall(call, m_handles.Process(), m_handles.Device(), arguments...);
    }

    /// Registers this process; events come to `callback` from inside this call on. The result code.
    u32 Register(DeviceEventCallback callback) REQUIRES(kServerThread);

    DeviceHandles& Handles() { return m_handles; }
    const DeviceHandles& Handles() const { return m_handles; }

  private:
    DeviceHandles m_handles;
};
