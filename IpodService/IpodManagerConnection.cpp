// The connection's state machine, one step a pass.

#include "IpodService/IpodManager.h"

void IpodManager::UpdateConnection() {
    switch (m_connectionState.load()) {
        case ConnectionState::Unregistered:
            RegisterProcess();
            break;
        case ConnectionState::Registered:
            FindAndOpenDevice();
            SetUpCharging();
            break;
        case ConnectionState::Connected:
            OpenSessionOrRecover("EIMS_Connected");
            break;
        case ConnectionState::DatabaseComplete:
            OpenSessionOrRecover("EIMS_DBComplete");
            break;
        case ConnectionState::BuildingDatabase:
        case ConnectionState::BrowseReady:
            break;
    }
}

void IpodManager::FindAndOpenDevice() {
    const u32 kept = GetNumDevices();
    if (static_cast<i32>(kept) <= 0) {
        return;
    }
    GetDeviceList();
    // The second count sized the list and may be smaller than the first.
    for (u32 i = 0; i < kept && i < m_listedDevices; ++i) {
        if (OpenDevice(m_deviceList[i].handle) == 0) {
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

void IpodManager::OpenSessionOrRecover(const char* stateText) {
    LOG_INFO("%s", stateText);
    if (OpenBrowseSession() == 0) {
        return;
    }
    ResetDatabase();
    CloseBrowseSession();
    if (OpenBrowseSession() != 0) {
        CloseDevice();
    }
}

void IpodManager::ProcessDelayedClose() {
    if (!m_closePending.exchange(false)) {
        return;
    }
    LOG_WARN("performing delayed close device!\n");
    CloseDevice();
    m_notifications->OnConnection(false);
}
