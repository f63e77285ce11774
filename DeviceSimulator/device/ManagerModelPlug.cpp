// Devices that come and go, and that are locked and unlocked.
#include <algorithm>

#include "DeviceSimulator/device/DeviceEvents.h"
#include "DeviceSimulator/device/ManagerModel.h"

namespace DeviceSimulator {

namespace {

/// What a USB bus has addresses for.
constexpr std::size_t kMostDevices = 127;

std::string HandleText(std::uint32_t handle) {
    return "handle " + std::to_string(handle);
}

}  // namespace

/// Empty when nothing is; then `handles` has those that are asked for.
std::string ManagerModel::WhatIsWrong(const std::vector<DeviceDescription>& descriptions,
                                      std::set<std::uint32_t>& handles) const {
    if (descriptions.size() > kMostDevices - std::min(kMostDevices, m_devices.size())) {
        return "no more than 127 devices can be plugged in at once";
    }
    std::set<std::uint32_t> hubs;
    for (const DeviceDescription& device : descriptions) {
        const std::uint32_t handle = device.handle.value_or(0);
        if (handle != 0 && (Find(handle) != nullptr || !handles.insert(handle).second)) {
            return HandleText(handle) + " is taken";
        }
        const Device* hub = Find(device.hub);
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

std::uint32_t ManagerModel::Plug(const DeviceDescription& description) {
    std::string error;
    const auto handles = PlugAll({description}, error);
    return handles.empty() ? 0 : handles.front();
}

std::vector<std::uint32_t> ManagerModel::PlugAll(const std::vector<DeviceDescription>& descriptions,
                                                 std::string& error) {
    std::set<std::uint32_t> wanted;
    error = WhatIsWrong(descriptions, wanted);
    if (!error.empty()) {
        return {};
    }
    const auto isFree = [&](std::uint32_t handle) {
        return handle != 0 && Find(handle) == nullptr && wanted.count(handle) == 0;
    };
    std::vector<std::uint32_t> handles;
    for (const DeviceDescription& device : descriptions) {
        std::uint32_t handle = device.handle.value_or(0);
        while (handle == 0 || (handle != device.handle && !isFree(handle))) {
            handle = m_nextHandle++;
        }
        Add(device, handle);
        handles.push_back(handle);
    }
    return handles;
}

void ManagerModel::Add(const DeviceDescription& description, std::uint32_t handle) {
    auto device =
        std::make_unique<Device>(MakeIdentity(description, handle), description.character, m_nextInstance++);
    device->isLocked = description.isLocked;
    device->isAuthenticated = IsPlayer(description.type) && !description.isLocked;
    for (const DeviceEvent& event : MakeArrivalEvents(device->identity, description.isLocked)) {
        Push(event, 0);
    }
    m_devices.push_back(std::move(device));
}

bool ManagerModel::Unplug(std::uint32_t handle) {
    const Device* const device = Find(handle);
    if (device == nullptr) {
        return false;
    }
    const auto findBehind = [&] {
        return std::find_if(m_devices.begin(), m_devices.end(),
                            [&](const auto& other) { return other->identity.hub == handle; });
    };
    for (auto behind = findBehind(); behind != m_devices.end(); behind = findBehind()) {
        Unplug((*behind)->identity.handle);
    }
    Push(MakeDisconnectEvent(device->identity), 0);
    std::erase_if(m_devices, [&](const auto& other) { return other.get() == device; });
    return true;
}

void ManagerModel::SetLocked(Device& player, bool isLocked) {
    if (std::exchange(player.isLocked, isLocked) == isLocked) {
        return;
    }
    Push(MakeAuthenticationEvent(isLocked ? DEV_MGR_EVENT_AUTH_LOCKED : DEV_MGR_EVENT_AUTH_UNLOCKED,
                                 player.identity),
         0);
    if (!isLocked && !std::exchange(player.isAuthenticated, true)) {
        Push(MakeAuthenticationEvent(DEV_MGR_EVENT_AUTH_SUCCESS, player.identity), 0);
    }
}

Device* ManagerModel::Find(std::uint32_t handle) const {
    const auto found = std::find_if(m_devices.begin(), m_devices.end(),
                                    [&](const auto& device) { return device->identity.handle == handle; });
    return found == m_devices.end() ? nullptr : found->get();
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
