// A block of memory that the device manager lends.
#pragma once

#include <optional>
#include <span>

#include "DeviceManager/DeviceManager.h"
#include "IpodService/DeviceLink.h"

/// Server thread only.
class SharedBlock {
  public:
    /// `number`, 1 or 2, is what the log calls the block.
    explicit SharedBlock(int number) : m_number(number) {}

    /// Asks for 2 MiB; with a block in place, or asked for and refused, there is nothing to do. 0, or 1 minus
    /// the code.
    i32 Allocate(const DeviceLink& link) REQUIRES(kServerThread);
    /// Gives the block back, and one that was refused as well. 0, or 1 minus the code.
    i32 Free(const DeviceLink& link) REQUIRES(kServerThread);

    /// True from the first Allocate to the next Free, also when the device manager refused.
    bool IsInPlace() const REQUIRES(kServerThread) { return m_address.has_value(); }
    /// 0: there is no memory behind the block.
    u32 Address() const REQUIRES(kServerThread) { return m_address.value_or(0); }
    /// The block's first `length` bytes, fewer where it is smaller.
    std::span<const u8> Bytes(u32 length) const REQUIRES(kServerThread);

  private:
    const int m_number;
    std::optional<u32> m_address GUARDED_BY(kServerThread);  ///< 0 after a refusal
    u32 m_granted GUARDED_BY(kServerThread) = 0;             ///< bytes that may be read
};
