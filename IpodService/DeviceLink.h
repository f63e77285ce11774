// The way to the device manager: every call of its functions goes through here.
#pragma once

#include "IpodService/DeviceCall.h"
#include "IpodService/DeviceHandles.h"
#include "IpodService/PendingWork.h"
#include "ServiceUtil/ThreadRole.h"

/// The two handles, and the calls that take them. No lock is held across a call: it may wait for a callback
/// that wants the lock.
class DeviceLink {
  public:
    /// A device that stays busy is given up when `pending` has a request to exit. Outlives the link.
    explicit DeviceLink(PendingWork& pending) : m_pending(pending) {}

    /// Calls a function that takes the process handle first.
    template <typename Function, typename... Arguments>
    u32 OnProcess(const DeviceCall<Function>& call, Arguments... arguments) const REQUIRES(kServerThread) {
        return Make(call, m_handles.Process(), arguments...);
    }
    /// Calls a function that takes the process handle and the open device's handle first.
    template <typename Function, typename... Arguments>
    u32 OnDevice(const DeviceCall<Function>& call, Arguments... arguments) const REQUIRES(kServerThread) {
        return Make(call, m_handles.Process(), m_handles.Device(), arguments...);
    }

    /// Registers this process; events come to `callback` from inside this call on. The result code.
    u32 Register(DeviceEventCallback callback) REQUIRES(kServerThread);

    DeviceHandles& Handles() { return m_handles; }
    const DeviceHandles& Handles() const { return m_handles; }

    /// Whether the service is to end: what takes many calls stops between two of them.
    bool IsEnding() const { return m_pending.IsExitRequested(); }

  private:
    template <typename Function, typename... Arguments>
    u32 Make(const DeviceCall<Function>& call, Arguments... arguments) const REQUIRES(kServerThread) {
        return MakeCall(
            call, [this](std::chrono::milliseconds time) { return m_pending.WaitForExit(time); },
            arguments...);
    }

    PendingWork& m_pending;
    DeviceHandles m_handles;
};
