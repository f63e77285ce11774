#include "DeviceSimulator/wire/LowMemory.h"

#include <unistd.h>

namespace DeviceSimulator {

namespace {

constexpr std::uint64_t kAddressLimit = std::uint64_t{1} << 32U;

std::uint64_t PageSize() {
    return static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

std::uint64_t WholePages(std::uint32_t size) {
    const std::uint64_t page = PageSize();
    return (size + page - 1) / page * page;
}

void* TryReserve(void* hint, std::size_t length, int extraFlags) {
    void* start =
        mmap(hint, length, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | extraFlags, -1, 0);
    if (start == MAP_FAILED) {
        return nullptr;
    }
    if (std::uint64_t{reinterpret_cast<std::uintptr_t>(start)} + length > kAddressLimit) {
        munmap(start, length);
        return nullptr;
    }
    return start;
}

void* Reserve(std::size_t length) {
#ifdef MAP_32BIT
    return TryReserve(nullptr, length, MAP_32BIT);
#else
    if (void* start = TryReserve(nullptr, length, 0)) {
        return start;
    }
    constexpr std::uint64_t kFirstHint = 0x10000000;
    constexpr std::uint64_t kHintStep = 0x04000000;
    for (std::uint64_t hint = kFirstHint; hint + length <= kAddressLimit; hint += kHintStep) {
        if (void* start = TryReserve(reinterpret_cast<void*>(static_cast<std::uintptr_t>(hint)), length, 0)) {
            return start;
        }
    }
    return nullptr;
#endif
}

}  // namespace

LowMemory::LowMemory(std::uint32_t size) : m_size(size) {
    const std::uint64_t length = WholePages(size) + PageSize();
    if (length < kAddressLimit) {
        const auto mapped = static_cast<std::size_t>(length);
        m_start = std::unique_ptr<void, Unmap>(Reserve(mapped), Unmap{mapped});
    }
}

bool LowMemory::Fill(int file) {
    const int flags = MAP_FIXED | (file >= 0 ? MAP_SHARED : MAP_PRIVATE | MAP_ANONYMOUS);
    const auto length = static_cast<std::size_t>(WholePages(m_size));
    return m_start != nullptr && length != 0 &&
           mmap(m_start.get(), length, PROT_READ | PROT_WRITE, flags, file, 0) != MAP_FAILED;
}

}  // namespace DeviceSimulator
