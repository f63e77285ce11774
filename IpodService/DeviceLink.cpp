#include "IpodService/DeviceLink.h"

u32 DeviceLink::Register(DeviceEventCallback callback) {
    u32 handle = 0;
    m_handles.BeginRegistering();
    const u32 code = Make(DEVICE_CALL(eDevMgrRegisterProcess, .failureReported = false), &handle, callback);
    m_handles.EndRegistering(code == DEV_MGR_SUCCESS ? handle : 0);
    return code;
}
