// The devices attached, and opening and closing one of them.

#include <algorithm>
#include <cstring>
#include <span>

#include "IpodService/DeviceKind.h"
#include "IpodService/FileCleanup.h"
#include "IpodService/IpodManager.h"
#include "IpodService/RecordText.h"

namespace {

// More than any bus carries. A count that lies costs no more than this.
constexpr u32 kMaxListedDevices = 1024;

constexpr const char* kDatabaseExtension = ".db";
// Where the device manager is asked to build. It is not where ClearDatabaseFiles looks.
constexpr const char* kBuildFolder = "./root/iap2db";

bool HasDatabaseExtension(const char* name) {
    const char* dot = std::strrchr(name, '.');
    return dot != nullptr && std::strcmp(dot, kDatabaseExtension) == 0;
}

}  // namespace

u32 IpodManager::GetNumDevices() {
    m_numDevices = 0;
    OnProcess(DeviceCall("eDevMgrGetNumDevices").FailureNamed("getNumDevices"), eDevMgrGetNumDevices,
              &m_numDevices);
    return m_numDevices;
}

const DeviceRecord* IpodManager::GetDeviceList() {
    GetNumDevices();
    m_deviceList.reset();
    m_listedDevices = 0;
    if (m_numDevices == 0) {
        return nullptr;
    }
    const u32 room = std::min(m_numDevices, kMaxListedDevices);
    m_numDevices = room;
    m_deviceList.reset(static_cast<DeviceRecord*>(std::calloc(room, sizeof(DeviceRecord))));
    if (m_deviceList == nullptr) {
        return nullptr;
    }
    m_listedDevices = room;
    const u32 code = OnProcess(DeviceCall("eDevMgrGetDeviceList"), eDevMgrGetDeviceList, m_deviceList.get(),
                               0u, &m_numDevices);
    if (code != DEV_MGR_SUCCESS) {
        return m_deviceList.get();
    }
    m_numDevices = std::min(m_numDevices, room);
    LOG_INFO("Num devices is :%d\n", static_cast<int>(m_numDevices));
    for (u32 i = 0; i < m_numDevices; ++i) {
        LogDevice(m_deviceList[i]);
        CopyText(RecordText(m_deviceList[i].name).View(), m_deviceName);
    }
    return m_deviceList.get();
}

void IpodManager::LogDevice(const DeviceRecord& device) {
    const RecordText name(device.name);
    LOG_INFO("Device Name : %.*s\tHandle : %d\n", name.Length(), name.Data(),
             static_cast<int>(device.handle));
    const RecordText node(device.node);
    const RecordText serial(device.serial);
    LOG_INFO("Product ID is 0x%x,\tVendor Id is 0x%x\tDevice Node is %.*s\tDevice serial is %.*s\t\n",
             device.productId, device.vendorId, node.Length(), node.Data(), serial.Length(), serial.Data());
    if (DeviceKind::IsMassStorage(device.type)) {
        const RecordText path(device.mountPath);
        LOG_INFO("....Mount Path : %.*s\n", path.Length(), path.Data());
    }
}

const DeviceRecord* IpodManager::FindDevice(u32 handle) const {
    const std::span<const DeviceRecord> devices(m_deviceList.get(), m_listedDevices);
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&](const DeviceRecord& device) { return device.handle == handle; });
    return found == devices.end() ? nullptr : &*found;
}

i32 IpodManager::OpenDevice(u32 handle) {
    m_deviceHandle = 0;
    const DeviceRecord* device = FindDevice(handle);
    if (device == nullptr) {
        LOG_DEBUG("---No such device is found----\n");
        return 0;
    }
    LOG_INFO("opening d device with devHandle:%d\n", static_cast<int>(handle));
    const u32 code = OnProcess(DeviceCall("eDevMgrOpenDevice"), eDevMgrOpenDevice, handle);
    if (code != DEV_MGR_SUCCESS) {
        return Outcome(code);
    }
    const bool builds = DeviceKind::IsIap2(device->type);
    if (!builds && !DeviceKind::IsIap(device->type)) {
        return 0;
    }
    m_connectionState = ConnectionState::Connected;
    m_deviceHandle = handle;
    return builds ? StartBuildingDatabase(handle) : 0;
}

i32 IpodManager::StartBuildingDatabase(u32 handle) {
    if (HasDatabaseExtension(m_deviceName.data())) {
        LOG_INFO("db ext is there no need to add\n");
    } else {
        AppendText(kDatabaseExtension, m_deviceName);
    }
    std::array<char, 256> path{};
    CopyText(kBuildFolder, path);
    AppendText("/", path);
    AppendText(m_deviceName.data(), path);
    const u32 code = OnProcess(DeviceCall("eDevMgriPodStartBuildingDatabase"),
                               eDevMgriPodStartBuildingDatabase, handle, path.data());
    if (code == DEV_MGR_SUCCESS) {
        LOG_DEBUG("DB Name will be :%s\n", path.data());
        // The build may have reported its end already: that must not be taken back.
        ConnectionState expected = ConnectionState::Connected;
        m_connectionState.compare_exchange_strong(expected, ConnectionState::BuildingDatabase);
    }
    return Outcome(code);
}

i32 IpodManager::CloseDevice() {
    LOG_INFO("closing d device with devHandle:%d\n", static_cast<int>(m_deviceHandle));
    const u32 code = OnDevice(DeviceCall("eDevMgrCloseDevice"), eDevMgrCloseDevice);
    m_deviceHandle = 0;
    m_connectionState = ConnectionState::Registered;
    EmptyBrowseStack();
    StopStream();
    ClearPlaylistFiles();
    ClearDatabaseFiles();
    return Outcome(code);
}

void IpodManager::ClearPlaylistFiles() const {
    const std::vector<std::string> files = ListFiles(m_folders.playlists, ".pls");
    if (files.empty()) {
        return;
    }
    LOG_DEBUG("iPod - Clearing playlist files! \n");
    RemoveFiles(m_folders.playlists, files);
}

void IpodManager::ClearDatabaseFiles() const {
    const std::vector<std::string> files = ListFiles(m_folders.database, kDatabaseExtension);
    if (files.empty()) {
        return;
    }
    LOG_DEBUG("iPod - Clearing database files! \n");
    RemoveFiles(m_folders.database, files);
}
