// Finding, opening and closing a device.

#include <algorithm>

#include "IpodService/DatabasePath.h"
#include "IpodService/DeviceKind.h"
#include "IpodService/IpodManager.h"
#include "IpodService/LogText.h"
#include "IpodService/Outcome.h"

void IpodManager::FindAndOpenDevice() {
    const u32 counted = GetNumDevices();
    if (static_cast<i32>(counted) <= 0) {
        return;
    }
    m_deviceList.Read(m_link);
    const std::span<const DeviceRecord> records = m_deviceList.Records();
    for (const DeviceRecord& device : records.first(std::min<std::size_t>(counted, records.size()))) {
        if (device.handle != 0 && OpenDevice(device.handle) == 0) {
            m_notifications->OnConnection(true);
            return;
        }
    }
}

void IpodManager::SetUpCharging() {
    constexpr i32 kMaxMilliamps = 1000;
    SetMaxCurrent(kMaxMilliamps);
    SetInternalBatteryChargeState(1);
}

i32 IpodManager::OpenDevice(u32 handle) {
    m_link.Handles().SetDevice(0);
    const DeviceRecord* const device = m_deviceList.Find(handle);
    if (device == nullptr) {
        LOG_DEBUG("---No such device is found----\n");
        return 0;
    }
    LOG_INFO("opening d device with devHandle:%d\n", static_cast<int>(handle));
    const u32 code = m_link.OnProcess(DEVICE_CALL(eDevMgrOpenDevice), handle);
    if (code != DEV_MGR_SUCCESS) {
        return Outcome(code);
    }
    const bool builds = DeviceKind::IsIap2(device->type);
    if (!builds && !DeviceKind::IsIap(device->type)) {
        return 0;
    }
    m_connectionState = ConnectionState::Connected;
    m_link.Handles().SetDevice(handle);
    return builds ? StartBuildingDatabase() : 0;
}

i32 IpodManager::StartBuildingDatabase() {
    const std::string& name = m_deviceList.LastName();
    if (HasDatabaseExtension(name)) {
        LOG_INFO("db ext is there no need to add\n");
    }
    std::string path = DatabasePath(name);
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgriPodStartBuildingDatabase), path.data());
    if (code == DEV_MGR_SUCCESS) {
        LOG_DEBUG("DB Name will be :%s\n", LogText(path).c_str());
        // The build may have reported its end already: that must not be taken back.
        ConnectionState expected = ConnectionState::Connected;
        m_connectionState.compare_exchange_strong(expected, ConnectionState::BuildingDatabase);
    }
    return Outcome(code);
}

i32 IpodManager::CloseDevice() {
    LOG_INFO("closing d device with devHandle:%d\n", static_cast<int>(m_link.Handles().Device()));
    const u32 code = m_link.OnDevice(DEVICE_CALL(eDevMgrCloseDevice));
    m_link.Handles().SetDevice(0);
    m_connectionState = ConnectionState::Registered;
    m_pending.DropAlbumArt();
    m_browseStack.Clear();
    StopStream();
    ClearDeviceFiles(m_folders);
    return Outcome(code);
}

void IpodManager::ProcessDelayedClose() {
    if (!m_pending.TakeClose()) {
        return;
    }
    LOG_WARN("performing delayed close device!\n");
    CloseDevice();
    m_notifications->OnConnection(false);
}
