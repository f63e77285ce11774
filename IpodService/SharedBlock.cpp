#include "IpodService/SharedBlock.h"

#include <algorithm>
#include <utility>

#include "IpodService/Outcome.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr u32 kBlockSize = 0x200000;

}  // namespace

i32 SharedBlock::Allocate(const DeviceLink& link) {
    if (IsInPlace()) {
        LOG_DEBUG("Shm %d block already in place.\n", m_number);
        return 0;
    }
    u32 size = kBlockSize;
    u32 address = 0;
    const u32 code = link.OnProcess(
        DEVICE_CALL(eDevMgrAllocateSharedMemory, .announcedAfterwards = m_number == 2), &size, &address);
    m_address = address;
    // A grant beyond what was asked for is no promise of memory.
    m_granted = code == DEV_MGR_SUCCESS ? std::min(size, kBlockSize) : 0;
    LOG_DEBUG("shm%d size = %d, and Memory = %d\n", m_number, static_cast<int>(size),
              static_cast<int>(address));
    return Outcome(code);
}

i32 SharedBlock::Free(const DeviceLink& link) {
    if (!IsInPlace()) {
        LOG_INFO("Shm %d block already gone.\n", m_number);
        return 0;
    }
    const u32 code = link.OnProcess(DEVICE_CALL(eDevMgrDeAllocateSharedMemory), Address());
    m_address.reset();
    m_granted = 0;
    return Outcome(code);
}

std::span<const u8> SharedBlock::Bytes(u32 length) const {
    if (Address() == 0) {
        return {};
    }
    // An address comes from the device manager as a number.
    // NOLINTNEXTLINE(performance-no-int-to-ptr)
    const auto* const bytes = reinterpret_cast<const u8*>(static_cast<std::uintptr_t>(Address()));
    return {bytes, std::min(length, m_granted)};
}
