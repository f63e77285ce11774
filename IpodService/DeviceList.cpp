#include "IpodService/DeviceList.h"

#include <algorithm>

#include "IpodService/DeviceKind.h"
#include "IpodService/LogText.h"
#include "IpodService/RecordText.h"

namespace {

// More than any bus carries. A count that lies costs no more than this.
constexpr u32 kMostDevices = 1024;

void Log(const DeviceRecord& device) {
    LOG_INFO("Device Name : %s\tHandle : %d\n", LogText(RecordText(device.name)).c_str(),
             static_cast<int>(device.handle));
    LOG_INFO("Product ID is 0x%x,\tVendor Id is 0x%x\tDevice Node is %s\tDevice serial is %s\t\n",
             device.productId, device.vendorId, LogText(RecordText(device.node)).c_str(),
             LogText(RecordText(device.serial)).c_str());
    if (DeviceKind::IsMassStorage(device.type)) {
        LOG_INFO("....Mount Path : %s\n", LogText(RecordText(device.mountPath)).c_str());
    }
}

}  // namespace

u32 DeviceList::Count(const DeviceLink& link) {
    u32 count = 0;
    link.OnProcess(DEVICE_CALL(eDevMgrGetNumDevices, .failureName = "getNumDevices"), &count);
    return count;
}

void DeviceList::Read(const DeviceLink& link) {
    m_records.clear();
    const u32 room = std::min(Count(link), kMostDevices);
    if (room == 0) {
        return;
    }
    m_records.resize(room);
    u32 written = room;
    const u32 code = link.OnProcess(DEVICE_CALL(eDevMgrGetDeviceList), m_records.data(), 0u, &written);
    m_records.resize(code == DEV_MGR_SUCCESS ? std::min(written, room) : 0);
    if (code != DEV_MGR_SUCCESS) {
        return;
    }
    LOG_INFO("Num devices is :%d\n", static_cast<int>(m_records.size()));
    for (const DeviceRecord& device : m_records) {
        Log(device);
        m_lastName = RecordText(device.name);
    }
}

const DeviceRecord* DeviceList::Find(u32 handle) const {
    const auto found = std::find_if(m_records.begin(), m_records.end(),
                                    [handle](const DeviceRecord& device) { return device.handle == handle; });
    return handle == 0 || found == m_records.end() ? nullptr : &*found;
}
