// Devices that come and go, and that are locked and unlocked.
#include <algorithm>
#include <set>

#include "DeviceSimulator/device/DeviceEvents.h"
#include "DeviceSimulator/device/ManagerModel.h"

namespace DeviceSimulator {

namespace {

/// What a USB bus has addresses for.
constexpr std::size_t kMostDevices = 127;

std::string HandleText(std::uint32_t handle) {
    return "handle " + std::to_string(handle);
}

/// What is wrong with plugging all of them in; empty when nothing is.
std::string WhatIsWrong(const ManagerModel& model, const std::vector<DeviceDescription>& descriptions) {
    if (descriptions.size() > kMostDevices - std::min(kMostDevices, model.Devices().size())) {
        return "no more than 127 devices can be plugged in at once";
    }
    std::set<std::uint32_t> handles;
    std::set<std::uint32_t> hubs;
    for (const DeviceDescription& device : descriptions) {
        const std::uint32_t handle = device.handle.value_or(0);
        if (handle != 0 && (model.Find(handle) != nullptr || !handles.insert(handle).second)) {
            return HandleText(handle) + " is taken";
        }
        const Device* hub = model.Find(device.hub);
        const bool hasHub =
            hubs.count(device.hub) != 0 || (hub != nullptr && hub->identity.type == DEV_MGR_DEVICE_TYPE_HUB);
        if (device.hub != 0 && !hasHub) {
            return "no hub has " + HandleText(device.hub);
        }
        if (device.isLocked && !IsPlayer(device.type)) {
            return "only a player can be locked";
        }
        if (device.type == DEV_MGR_DEVICE_TYPE_HUB) {
            hubs.insert(handle);
        }
    }
    return {};
}

}  // namespace

std::uint32_t ManagerModel::Plug(const DeviceDescription& description) {
    const std::uint32_t wanted = description.handle.value_or(0);
    const Device* const hub = Find(description.hub);
    const bool hasHub = hub != nullptr && hub->identity.type == DEV_MGR_DEVICE_TYPE_HUB;
    if ((wanted != 0 && Find(wanted) != nullptr) || (description.hub != 0 && !hasHub)) {
        return 0;
    }
    const std::uint32_t handle = wanted != 0 ? wanted : FreeHandle();
    auto device =
        std::make_unique<Device>(MakeIdentity(description, handle), description.character, m_nextInstance++);
    device->isLocked = description.isLocked;
    device->isAuthenticated = IsPlayer(description.type) && !description.isLocked;
    for (const DeviceEvent& event : MakeArrivalEvents(device->identity, description.isLocked)) {
        Push(event, 0);
    }
    m_devices.push_back(std::move(device));
    return handle;
}

std::vector<std::uint32_t> ManagerModel::PlugAll(std::vector<DeviceDescription> descriptions,
                                                 std::string& error) {
    error = WhatIsWrong(*this, descriptions);
    if (!error.empty()) {
        return {};
    }
    const auto isWanted = [&](std::uint32_t handle) {
        return std::any_of(descriptions.begin(), descriptions.end(),
                           [&](const DeviceDescription& device) { return device.handle == handle; });
    };
    for (DeviceDescription& device : descriptions) {
        std::uint32_t handle = device.handle.value_or(0);
        while (handle == 0 || (device.handle != handle && isWanted(handle))) {
            handle = FreeHandle();
        }
        device.handle = handle;
    }
    std::vector<std::uint32_t> handles;
    for (const DeviceDescription& device : descriptions) {
        handles.push_back(Plug(device));
    }
    return handles;
}

bool ManagerModel::Unplug(std::uint32_t handle) {
    if (Find(handle) == nullptr) {
        return false;
    }
    std::vector<std::uint32_t> behind;
    for (const auto& device : m_devices) {
        if (device->identity.hub == handle) {
            behind.push_back(device->identity.handle);
        }
    }
    for (const std::uint32_t other : behind) {
        Unplug(other);
    }
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [&](const auto& device) { return device->identity.handle == handle; });
    Push(MakeDisconnectEvent((*found)->identity), 0);
    m_devices.erase(found);
    return true;
}

bool ManagerModel::SetLocked(std::uint32_t handle, bool isLocked) {
    Device* device = Find(handle);
    if (device == nullptr || !IsPlayer(device->identity.type)) {
        return false;
    }
    if (std::exchange(device->isLocked, isLocked) == isLocked) {
        return true;
    }
    Push(MakeAuthenticationEvent(isLocked ? DEV_MGR_EVENT_AUTH_LOCKED : DEV_MGR_EVENT_AUTH_UNLOCKED,
                                 device->identity),
         0);
    if (!isLocked && !std::exchange(device->isAuthenticated, true)) {
        Push(MakeAuthenticationEvent(DEV_MGR_EVENT_AUTH_SUCCESS, device->identity), 0);
    }
    return true;
}

Device* ManagerModel::Find(std::uint32_t handle) const {
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [&](const auto& device) { return device->identity.handle == handle; });
    return found == m_devices.end() ? nullptr : found->get();
}

std::uint32_t ManagerModel::FreeHandle() {
    while (m_nextHandle == 0 || Find(m_nextHandle) != nullptr) {
        ++m_nextHandle;
    }
    return m_nextHandle++;
}

void ManagerModel::PlugPlanned(TimePoint now) {
    if (m_plugAt && *m_plugAt <= now) {
        m_plugAt.reset();
        m_hasPlugged = true;
        for (const DeviceDescription& description : m_options.devices) {
            Plug(description);
        }
    }
}

}  // namespace DeviceSimulator
