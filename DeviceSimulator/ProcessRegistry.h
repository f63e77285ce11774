// The processes that have registered.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace DeviceSimulator {

/// Not locked: the model's lock guards it. A handle is never given twice.
class ProcessRegistry {
  public:
    static constexpr std::size_t kMostProcesses = 8;

    /// 0 when there are too many already.
    std::uint32_t Add(DeviceEventCallback callback);
    bool Remove(std::uint32_t process) { return m_callbacks.erase(process) != 0; }
    void Clear() { m_callbacks.clear(); }

    bool Contains(std::uint32_t process) const { return m_callbacks.count(process) != 0; }
    /// Null when it is not registered.
    DeviceEventCallback Callback(std::uint32_t process) const;
    std::vector<std::uint32_t> Handles() const;

  private:
    // Apart from where device handles begin, so that one taken for the other is noticed.
    static constexpr std::uint32_t kFirstHandle = 101;

    std::map<std::uint32_t, DeviceEventCallback> m_callbacks;
    std::uint32_t m_nextHandle = kFirstHandle;
};

}  // namespace DeviceSimulator
