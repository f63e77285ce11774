// The processes that have registered.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "DeviceManager/DeviceManager.h"

namespace DeviceSimulator {

/// Is told what happens.
class EventListener {
  public:
    virtual ~EventListener() = default;
    /// Called without any lock, one event at a time.
    virtual void OnEvent(const DeviceEvent& event, std::uint32_t process) = 0;
    /// How many events it has been told of and not passed on yet. Any thread, under the model's lock.
    virtual std::size_t Waiting() { return 0; }
};

/// Not locked: the model's lock guards it. A handle is never given twice.
class ProcessRegistry {
  public:
    static constexpr std::size_t kMostProcesses = 8;

    /// 0 when there are too many already.
    std::uint32_t Add(std::shared_ptr<EventListener> listener);
    /// No handle below `handle` is given from now on.
    void SkipTo(std::uint32_t handle) { m_nextHandle = std::max(m_nextHandle, handle); }
    bool Remove(std::uint32_t process) { return m_listeners.erase(process) != 0; }
    void Clear() { m_listeners.clear(); }

    bool Contains(std::uint32_t process) const { return m_listeners.count(process) != 0; }
    /// Null when it is not registered.
    std::shared_ptr<EventListener> Listener(std::uint32_t process) const;
    /// Of the one that is furthest behind.
    std::size_t Waiting() const;
    std::vector<std::uint32_t> Handles() const;

  private:
    // Apart from where device handles begin, so that one taken for the other is noticed.
    static constexpr std::uint32_t kFirstHandle = 101;

    std::map<std::uint32_t, std::shared_ptr<EventListener>> m_listeners;
    std::uint32_t m_nextHandle = kFirstHandle;
};

}  // namespace DeviceSimulator
