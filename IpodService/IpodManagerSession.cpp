// Registration with the device manager and the shared memory that it lends.

#include "IpodService/DeviceManagerNames.h"
#include "IpodService/IpodManager.h"
#include "IpodService/IpodManagerRegistry.h"

namespace {

constexpr u32 kShmSize = 0x200000;

}  // namespace

i32 IpodManager::RegisterProcess() {
    u32 handle = 0;
    const u32 code = DeviceCall("eDevMgrRegisterProcess")
                         .FailureUnreported()(eDevMgrRegisterProcess, &handle,
                                              &IpodManagerRegistry::DeviceManagerCallback);
    if (code != DEV_MGR_SUCCESS) {
        LOG_INFO("Return from RegisterProcess is :%d, %s\n", static_cast<int>(code), ResultCodeName(code));
        return Outcome(code);
    }
    m_processHandle = handle;
    m_connectionState = ConnectionState::Registered;
    AllocateShm1();
    return Outcome(code);
}

i32 IpodManager::AllocateShm1() {
    m_shm1Size = kShmSize;
    if (m_shm1 != nullptr) {
        LOG_DEBUG("Shm 1 block already in place.\n");
        return 0;
    }
    m_shm1 = std::make_unique<u32>(0);
    const u32 code = OnProcess(DeviceCall("eDevMgrAllocateSharedMemory"), eDevMgrAllocateSharedMemory,
                               &m_shm1Size, m_shm1.get());
    m_shm1Granted = code == DEV_MGR_SUCCESS ? m_shm1Size : 0;
    LOG_DEBUG("shm1 size = %d, and Memory = %d\n", static_cast<int>(m_shm1Size), static_cast<int>(*m_shm1));
    return Outcome(code);
}

i32 IpodManager::AllocateShm2() {
    m_shm2Size = kShmSize;
    if (m_shm2 != nullptr) {
        LOG_DEBUG("Shm 2 block already in place.\n");
        return 0;
    }
    m_shm2 = std::make_unique<u32>(0);
    const u32 code = OnProcess(DeviceCall("eDevMgrAllocateSharedMemory").AnnouncedAfterwards(),
                               eDevMgrAllocateSharedMemory, &m_shm2Size, m_shm2.get());
    LOG_DEBUG("shm2 size = %d, and Memory = %d\n", static_cast<int>(m_shm2Size), static_cast<int>(*m_shm2));
    return Outcome(code);
}

i32 IpodManager::FreeShm1() {
    m_shm1Granted = 0;
    return FreeBlock(m_shm1, "Shm 1 block already gone.\n");
}

i32 IpodManager::FreeShm2() {
    return FreeBlock(m_shm2, "Shm 2 block already gone.\n");
}

i32 IpodManager::FreeBlock(std::unique_ptr<u32>& cell, const char* goneText) {
    if (cell == nullptr) {
        LOG_INFO("%s", goneText);
        return 0;
    }
    const u32 code =
        OnProcess(DeviceCall("eDevMgrDeAllocateSharedMemory"), eDevMgrDeAllocateSharedMemory, *cell);
    cell.reset();
    return Outcome(code);
}

i32 IpodManager::Shutdown() {
    FreeShm1();
    FreeShm2();
    const u32 code = OnProcess(
        DeviceCall("eDevMgrDeRegisterProcess").FailureAs("Return form eDevMgrDeRegisterProcess is "),
        eDevMgrDeRegisterProcess);
    if (code == DEV_MGR_SUCCESS) {
        m_connectionState = ConnectionState::Unregistered;
    }
    return Outcome(code);
}
