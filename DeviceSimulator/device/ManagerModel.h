// Everything that the simulated device manager knows: processes, their memory, devices, and what is yet to be
// told.
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "DeviceSimulator/device/Device.h"
#include "DeviceSimulator/device/ProcessRegistry.h"

namespace DeviceSimulator {

/// An event on its way to the callbacks.
struct PendingEvent {
    DeviceEvent event;
    /// Only for the processes that have this device open by the time of delivery; 0: for all.
    std::uint64_t instance = 0;
    /// Counts up from 1.
    std::uint64_t sequence = 0;
};

/// Knows no clock and no thread: whoever holds it locks it and hands it the time.
class ManagerModel {
  public:
    explicit ManagerModel(SimulatorOptions options = {}) { Reset(std::move(options)); }
    void Reset(SimulatorOptions options);

    // Processes

    DevMgrResult Register(std::shared_ptr<EventListener> listener, std::uint32_t& process, TimePoint now);
    DevMgrResult Deregister(std::uint32_t process, TimePoint now);
    /// As Deregister, of a process that is no more: what plays goes on.
    void Abandon(std::uint32_t process, TimePoint now);
    void SkipProcessesTo(std::uint32_t handle) { m_processes.SkipTo(handle); }
    const ProcessRegistry& Processes() const { return m_processes; }
    DevMgrResult AllocateMemory(std::uint32_t process, std::uint32_t size, const MapBlock& map,
                                std::uint32_t& block) {
        return m_processes.Allocate(process, size, map, block);
    }
    DevMgrResult FreeMemory(std::uint32_t process, std::uint32_t block) {
        return m_processes.Free(process, block);
    }
    /// Empty when `process` has no such block.
    std::span<std::uint8_t> Memory(std::uint32_t process, std::uint32_t block) const {
        return m_processes.Bytes(process, block);
    }

    // Devices

    /// As PlugAll, of one: its handle, or 0.
    std::uint32_t Plug(const DeviceDescription& description);
    /// Plugs all of them in and returns their handles; none, and plugs nothing in, where `error` says why. A
    /// hub stands before what hangs on it.
    std::vector<std::uint32_t> PlugAll(const std::vector<DeviceDescription>& descriptions,
                                       std::string& error);
    /// With a hub goes what hangs on it.
    bool Unplug(std::uint32_t handle);
    /// A locked player cannot be opened; who has it open keeps it.
    void SetLocked(Device& player, bool isLocked);
    /// Null when no such device is plugged in.
    Device* Find(std::uint32_t handle) const;
    const std::vector<std::unique_ptr<Device>>& Devices() const { return m_devices; }
    /// The devices of the device list, in the order in which they came.
    std::vector<const Device*> Listed() const;
    DevMgrResult Open(std::uint32_t process, std::uint32_t handle);
    DevMgrResult Close(std::uint32_t process, std::uint32_t handle, TimePoint now);
    /// `progress` as for DatabaseBuild::Start.
    DevMgrResult StartDatabase(std::uint32_t process, std::uint32_t handle,
                               std::shared_ptr<const BuildProgress> progress, TimePoint now);
    DevMgrResult OpenSession(std::uint32_t process, std::uint32_t handle);
    DevMgrResult CloseSession(std::uint32_t process, std::uint32_t handle);

    // What a call works on. Each checks what comes before it and writes its out argument on success only.

    /// A player that `process` has opened.
    DevMgrResult FindPlayer(std::uint32_t process, std::uint32_t handle, Device*& device);
    /// Its browse session.
    DevMgrResult FindSession(std::uint32_t process, std::uint32_t handle, BrowseSession*& session);

    // Events

    /// While so many wait, none is taken of those that are written by hand, which come as fast as can be.
    static constexpr std::size_t kMostWaiting = 1024;
    /// Tells every process. False when too many events wait.
    bool Fire(const DeviceEvent& event);
    /// Tells the sample rate that `device` plays at, unless a player told of that one last.
    void TellSampleRate(const Device& device);
    /// Lets everything happen that is due up to `now`; what there is to tell is then pending.
    void Advance(TimePoint now);
    /// When the next thing happens by itself.
    std::optional<TimePoint> NextDue() const;
    bool HasPending() const { return !m_pending.empty(); }
    PendingEvent TakePending();
    /// The sequence number of the newest event so far.
    std::uint64_t LastSequence() const { return m_lastSequence; }
    std::vector<std::uint32_t> Targets(const PendingEvent& pending) const;

  private:
    /// What a call needs of its device; the later ones imply those before them.
    enum class Access { Listed, Opened, Player };

    DevMgrResult Remove(std::uint32_t process, TimePoint now, bool playsOn);
    DevMgrResult FindDevice(std::uint32_t process, std::uint32_t handle, Access access,
                            Device*& device) const;
    /// What `work`(device) answers, or what keeps `process` from the device.
    template <typename Work>
    DevMgrResult WithDevice(std::uint32_t process, std::uint32_t handle, Access access, Work work) const {
        Device* device = nullptr;
        const DevMgrResult result = FindDevice(process, handle, access, device);
        return result == DEV_MGR_SUCCESS ? work(*device) : result;
    }
    std::string WhatIsWrong(const std::vector<DeviceDescription>& descriptions,
                            std::set<std::uint32_t>& handles) const;
    void Add(const DeviceDescription& description, std::uint32_t handle);
    void PlugPlanned(TimePoint now);
    void Push(const DeviceEvent& event, std::uint64_t instance);

    SimulatorOptions m_options;
    std::optional<TimePoint> m_plugAt;  // the devices that are there at start
    bool m_hasPlugged = false;
    ProcessRegistry m_processes;
    std::vector<std::unique_ptr<Device>> m_devices;
    std::uint32_t m_nextHandle = 1;
    std::uint64_t m_nextInstance = 1;
    std::deque<PendingEvent> m_pending;
    std::uint64_t m_lastSequence = 0;
    std::uint32_t m_toldSampleRate = 0;  // last, by any player
};

}  // namespace DeviceSimulator
