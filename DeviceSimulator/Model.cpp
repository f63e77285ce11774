#include "DeviceSimulator/Model.h"

#include <algorithm>

namespace DeviceSimulator {

void Model::Reset(SimulatorOptions options) {
    m_options = std::move(options);
    m_plugAt.reset();
    m_hasPlugged = false;
    m_processes.Clear();
    m_memory.FreeAll();
    m_devices.clear();
    m_nextHandle = 1;
    m_pending.clear();
    m_toldSampleRate = 0;
}

Result Model::Register(DeviceEventCallback callback, std::uint32_t& process, TimePoint now) {
    if (callback == nullptr) {
        return kWrongParameters;
    }
    const std::uint32_t handle = m_processes.Add(callback);
    if (handle == 0) {
        return kNoMoreProcesses;
    }
    process = handle;
    if (!m_hasPlugged && !m_plugAt) {
        m_plugAt = now + m_options.plugDelay;
    }
    return kSuccess;
}

Result Model::Deregister(std::uint32_t process, TimePoint now) {
    if (!m_processes.Remove(process)) {
        return kProcessNotRegistered;
    }
    m_memory.FreeAll(process);
    for (const auto& device : m_devices) {
        device->Close(process, now);
    }
    return kSuccess;
}

Result Model::AllocateMemory(std::uint32_t process, std::uint32_t size, std::uint32_t& block) {
    return m_processes.Contains(process) ? m_memory.Allocate(process, size, block) : kProcessNotRegistered;
}

Result Model::FreeMemory(std::uint32_t process, std::uint32_t block) {
    return m_processes.Contains(process) ? m_memory.Free(process, block) : kProcessNotRegistered;
}

std::vector<const Device*> Model::Listed() const {
    std::vector<const Device*> listed;
    for (const auto& device : m_devices) {
        if (IsListed(device->identity.type)) {
            listed.push_back(device.get());
        }
    }
    return listed;
}

Result Model::Open(std::uint32_t process, std::uint32_t handle) {
    Device* device = nullptr;
    const Result result = FindListed(process, handle, device);
    if (result != kSuccess) {
        return result;
    }
    if (device->isLocked && !device->IsOpenedBy(process)) {
        return kDeviceNotReady;
    }
    const bool isNew = device->openings.try_emplace(process).second;
    // Only a player's session is one at a time: a stick may be opened over and over.
    return isNew || !IsPlayer(device->identity.type) ? kSuccess : kDeviceAlreadyOpened;
}

Result Model::Close(std::uint32_t process, std::uint32_t handle, TimePoint now) {
    Device* device = nullptr;
    const Result result = FindOpened(process, handle, device);
    if (result == kSuccess) {
        device->Close(process, now);
    }
    return result;
}

Result Model::StartDatabase(std::uint32_t process, std::uint32_t handle,
                            std::shared_ptr<const BuildProgress> progress, TimePoint now) {
    Device* device = nullptr;
    const Result result = FindPlayer(process, handle, device);
    if (result != kSuccess) {
        return result;
    }
    if (!IsIap2(device->identity.type)) {
        return kNotSupportedByDevice;
    }
    if (device->database.IsRunning()) {
        return kDatabaseBuildInProgress;
    }
    device->database.Start(m_options.databaseBuildTime, std::move(progress), now);
    return kSuccess;
}

Result Model::OpenSession(std::uint32_t process, std::uint32_t handle) {
    Device* device = nullptr;
    const Result result = FindPlayer(process, handle, device);
    if (result != kSuccess) {
        return result;
    }
    if (device->database.IsRunning()) {
        return kDatabaseBuildInProgress;
    }
    auto& session = device->openings[process].session;
    if (session) {
        return kSessionAlreadyOpened;
    }
    session.emplace();
    return kSuccess;
}

Result Model::CloseSession(std::uint32_t process, std::uint32_t handle) {
    BrowseSession* session = nullptr;
    const Result result = FindSession(process, handle, session);
    if (result == kSuccess) {
        Find(handle)->openings[process].session.reset();
    }
    return result;
}

Result Model::FindPlayer(std::uint32_t process, std::uint32_t handle, Device*& device) {
    Device* found = nullptr;
    const Result result = FindOpened(process, handle, found);
    if (result != kSuccess) {
        return result;
    }
    if (!IsPlayer(found->identity.type)) {
        return kNotSupportedByDevice;
    }
    device = found;
    return kSuccess;
}

Result Model::FindSession(std::uint32_t process, std::uint32_t handle, BrowseSession*& session) {
    Device* device = nullptr;
    const Result result = FindPlayer(process, handle, device);
    if (result != kSuccess) {
        return result;
    }
    auto& found = device->openings[process].session;
    if (!found) {
        return kSessionNotOpened;
    }
    session = &*found;
    return kSuccess;
}

void Model::TellSampleRate(const Device& device) {
    const std::uint32_t rate = device.player.CurrentSound().rate;
    if (rate != 0 && rate != m_toldSampleRate) {
        Push(MakePlayerEvent({kSampleRate, rate}, device.identity.handle), device.instance);
    }
}

void Model::Advance(TimePoint now) {
    PlugPlanned(now);
    for (const auto& device : m_devices) {
        for (const DeviceEvent& event : device->TakeEvents(now)) {
            Push(event, device->instance);
        }
    }
}

std::optional<TimePoint> Model::NextDue() const {
    std::optional<TimePoint> next = m_plugAt;
    for (const auto& device : m_devices) {
        const auto due = device->NextDue();
        if (due && (!next || *due < *next)) {
            next = due;
        }
    }
    return next;
}

PendingEvent Model::TakePending() {
    PendingEvent pending = m_pending.front();
    m_pending.pop_front();
    return pending;
}

std::vector<std::uint32_t> Model::Targets(const PendingEvent& pending) const {
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

Result Model::FindListed(std::uint32_t process, std::uint32_t handle, Device*& device) const {
    if (!m_processes.Contains(process)) {
        return kProcessNotRegistered;
    }
    Device* found = Find(handle);
    if (found != nullptr && found->identity.type == kNoMedium) {
        return kDeviceNotMounted;
    }
    if (found == nullptr || !IsListed(found->identity.type)) {
        return kInvalidDeviceHandle;
    }
    device = found;
    return kSuccess;
}

Result Model::FindOpened(std::uint32_t process, std::uint32_t handle, Device*& device) const {
    Device* found = nullptr;
    const Result result = FindListed(process, handle, found);
    if (result != kSuccess) {
        return result;
    }
    if (!found->IsOpenedBy(process)) {
        return kDeviceNotOpened;
    }
    device = found;
    return kSuccess;
}

void Model::Push(const DeviceEvent& event, std::uint64_t instance) {
    m_pending.push_back({event, instance, ++m_lastSequence});
    if (instance != 0 && event.words[0] == kSampleRate) {
        m_toldSampleRate = event.words[1];
    }
}

}  // namespace DeviceSimulator
