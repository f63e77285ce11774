#include "DeviceSimulator/device/ManagerModel.h"

#include <algorithm>

namespace DeviceSimulator {

void ManagerModel::Reset(SimulatorOptions options) {
    m_options = std::move(options);
    m_plugAt.reset();
    m_hasPlugged = false;
    m_processes.Clear();
    m_devices.clear();
    m_nextHandle = 1;
    m_pending.clear();
    m_toldSampleRate = 0;
}

DevMgrResult ManagerModel::Register(std::shared_ptr<EventListener> listener, std::uint32_t& process,
                                    TimePoint now) {
    if (listener == nullptr) {
        return DEV_MGR_WRONG_PARAMS;
    }
    const std::uint32_t handle = m_processes.Add(std::move(listener));
    if (handle == 0) {
        return DEV_MGR_NO_MORE_PROCESS_ALLOWED;
    }
    process = handle;
    if (!m_hasPlugged && !m_plugAt) {
        m_plugAt = now + m_options.plugDelay;
    }
    return DEV_MGR_SUCCESS;
}

DevMgrResult ManagerModel::Deregister(std::uint32_t process, TimePoint now) {
    return Remove(process, now, false);
}

void ManagerModel::Abandon(std::uint32_t process, TimePoint now) {
    if (Remove(process, now, true) == DEV_MGR_SUCCESS) {
        // Who opens a device next has heard of no rate yet.
        m_toldSampleRate = 0;
    }
}

DevMgrResult ManagerModel::Remove(std::uint32_t process, TimePoint now, bool playsOn) {
    if (!m_processes.Remove(process)) {
        return DEV_MGR_PROCESS_NOT_REGISTERED;
    }
    for (const auto& device : m_devices) {
        device->Close(process, now, playsOn);
    }
    return DEV_MGR_SUCCESS;
}

std::vector<const Device*> ManagerModel::Listed() const {
    std::vector<const Device*> listed;
    for (const auto& device : m_devices) {
        if (IsListed(device->identity.type)) {
            listed.push_back(device.get());
        }
    }
    return listed;
}

DevMgrResult ManagerModel::Open(std::uint32_t process, std::uint32_t handle) {
    return WithDevice(process, handle, Access::Listed, [&](Device& device) {
        if (device.isLocked && !device.IsOpenedBy(process)) {
            return DEV_MGR_DEVICE_NOT_READY;
        }
        const bool isNew = device.openings.try_emplace(process).second;
        // Only a player's session is one at a time: a stick may be opened over and over.
        return isNew || !IsPlayer(device.identity.type) ? DEV_MGR_SUCCESS : DEV_MGR_DEVICE_ALREADY_OPENED;
    });
}

DevMgrResult ManagerModel::Close(std::uint32_t process, std::uint32_t handle, TimePoint now) {
    return WithDevice(process, handle, Access::Opened, [&](Device& device) {
        device.Close(process, now);
        return DEV_MGR_SUCCESS;
    });
}

DevMgrResult ManagerModel::StartDatabase(std::uint32_t process, std::uint32_t handle,
                                         std::shared_ptr<const BuildProgress> progress, TimePoint now) {
    return WithDevice(process, handle, Access::Player, [&](Device& device) {
        if (!IsIap2(device.identity.type)) {
            return DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE;
        }
        if (device.database.IsRunning()) {
            return DEV_MGR_IAP_DB_BUILDING_IN_PROGRESS;
        }
        const auto buildTime = device.character.databaseBuildTime.value_or(m_options.databaseBuildTime);
        device.database.Start(buildTime, std::move(progress), now);
        return DEV_MGR_SUCCESS;
    });
}

DevMgrResult ManagerModel::OpenSession(std::uint32_t process, std::uint32_t handle) {
    return WithDevice(process, handle, Access::Player, [&](Device& device) {
        if (device.database.IsRunning()) {
            return DEV_MGR_IAP_DB_BUILDING_IN_PROGRESS;
        }
        auto& session = device.openings[process];
        if (session) {
            return DEV_MGR_MD_BROWSE_SESSION_ALREADY_OPENED;
        }
        session.emplace();
        return DEV_MGR_SUCCESS;
    });
}

DevMgrResult ManagerModel::CloseSession(std::uint32_t process, std::uint32_t handle) {
    return WithDevice(process, handle, Access::Player, [&](Device& device) {
        auto& session = device.openings[process];
        return std::exchange(session, std::nullopt) ? DEV_MGR_SUCCESS : DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED;
    });
}

DevMgrResult ManagerModel::FindPlayer(std::uint32_t process, std::uint32_t handle, Device*& device) {
    return FindDevice(process, handle, Access::Player, device);
}

DevMgrResult ManagerModel::FindDevice(std::uint32_t process, std::uint32_t handle, Access access,
                                      Device*& device) const {
    if (!m_processes.Contains(process)) {
        return DEV_MGR_PROCESS_NOT_REGISTERED;
    }
    Device* const found = Find(handle);
    if (found != nullptr && found->identity.type == DEV_MGR_DEVICE_TYPE_NO_MEDIUM) {
        return DEV_MGR_DEVICE_NOT_MOUNTED;
    }
    if (found == nullptr || !IsListed(found->identity.type)) {
        return DEV_MGR_INVALID_DEVICE_HANDLE;
    }
    if (access != Access::Listed && !found->IsOpenedBy(process)) {
        return DEV_MGR_DEVICE_NOT_OPENED;
    }
    if (access == Access::Player && !IsPlayer(found->identity.type)) {
        return DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE;
    }
    device = found;
    return DEV_MGR_SUCCESS;
}

DevMgrResult ManagerModel::FindSession(std::uint32_t process, std::uint32_t handle, BrowseSession*& session) {
    return WithDevice(process, handle, Access::Player, [&](Device& device) {
        auto& found = device.openings[process];
        session = found ? &*found : session;
        return found ? DEV_MGR_SUCCESS : DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED;
    });
}

bool ManagerModel::Fire(const DeviceEvent& event) {
    if (m_pending.size() + m_processes.Waiting() >= kMostWaiting) {
        return false;
    }
    Push(event, 0);
    return true;
}

void ManagerModel::TellSampleRate(const Device& device) {
    const std::uint32_t rate = device.player.CurrentSound().rate;
    if (rate != 0 && rate != m_toldSampleRate) {
        Push(MakePlayerEvent({DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE, rate}, device.identity.handle),
             device.instance);
    }
}

void ManagerModel::Advance(TimePoint now) {
    PlugPlanned(now);
    for (const auto& device : m_devices) {
        for (const DeviceEvent& event : device->TakeEvents(now)) {
            Push(event, device->instance);
        }
    }
}

std::optional<TimePoint> ManagerModel::NextDue() const {
    std::optional<TimePoint> next = m_plugAt;
    for (const auto& device : m_devices) {
        const auto due = device->NextDue();
        if (due && (!next || *due < *next)) {
            next = due;
        }
    }
    return next;
}

PendingEvent ManagerModel::TakePending() {
    PendingEvent pending = m_pending.front();
    m_pending.pop_front();
    return pending;
}

std::vector<std::uint32_t> ManagerModel::Targets(const PendingEvent& pending) const {
    if (pending.instance == 0) {
        return m_processes.Handles();
    }
    std::vector<std::uint32_t> targets;
    for (const auto& device : m_devices) {
        if (device->instance == pending.instance) {
            for (const auto& opening : device->openings) {
                targets.push_back(opening.first);
            }
        }
    }
    return targets;
}

void ManagerModel::Push(const DeviceEvent& event, std::uint64_t instance) {
    m_pending.push_back({event, instance, ++m_lastSequence});
    if (instance != 0 && event.words[0] == DEV_MGR_EVENT_IPOD_NEW_TRACK_SAMPLE_RATE) {
        m_toldSampleRate = event.words[1];
    }
}

}  // namespace DeviceSimulator
