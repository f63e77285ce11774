#include "DeviceSimulator/device/DeviceEvents.h"

#include <algorithm>
#include <span>
#include <string>

#include "DeviceSimulator/device/FieldText.h"

namespace DeviceSimulator {

namespace {

/// Of a device's name in its events.
constexpr std::size_t kNameSize = 255;

DeviceEvent MakeConnectEvent(const DeviceIdentity& device) {
    std::string name(CutUtf8(device.name, kNameSize - 1));
    if (device.type == DEV_MGR_DEVICE_TYPE_HUB) {
        return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, device.productId, device.vendorId});
    }
    if (device.type == DEV_MGR_DEVICE_TYPE_UNKNOWN || device.type == DEV_MGR_DEVICE_TYPE_UNSUPPORTED) {
        return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type});
    }
    if (IsStick(device.type) || device.type == DEV_MGR_DEVICE_TYPE_NO_MEDIUM) {
        // A stick's mount path stands at a fixed place.
        name.resize(IsStick(device.type) ? kNameSize - 1 : name.size());
        const std::uint32_t mounted = IsStick(device.type) ? std::uint32_t{DEV_MGR_MOUNT_PASSED} : 0;
        return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, mounted, device.productId,
                          device.vendorId, device.handle},
                         {name, device.mountPath, device.serial});
    }
    const bool isMtp = device.type >= DEV_MGR_DEVICE_TYPE_MTP_2WIRE;
    return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, device.handle, device.productId,
                      device.vendorId, isMtp ? static_cast<std::uint32_t>(name.size()) : 0U},
                     {name, device.node, device.serial});
}

}  // namespace

DeviceEvent MakeEvent(const std::vector<std::uint32_t>& words, const std::vector<std::string_view>& texts) {
    DeviceEvent event{};
    std::copy_n(words.begin(), std::min(words.size(), std::size(event.words)), std::begin(event.words));
    std::span<char> room(event.text);
    for (const std::string_view text : texts) {
        CopyText(room, text);
        room = room.subspan(std::min(room.size(), text.size() + 1));
    }
    return event;
}

DeviceEvent MakeAuthenticationEvent(std::uint32_t id, const DeviceIdentity& device) {
    return MakeEvent({id, 0, 0, 0, 0, device.handle}, {device.node});
}

std::vector<DeviceEvent> MakeArrivalEvents(const DeviceIdentity& device, bool isLocked) {
    std::vector<DeviceEvent> events{MakeConnectEvent(device)};
    if (IsPlayer(device.type)) {
        for (const DevMgrEvent id : {DEV_MGR_EVENT_AUTH_STARTED,
                                     isLocked ? DEV_MGR_EVENT_AUTH_LOCKED : DEV_MGR_EVENT_AUTH_SUCCESS}) {
            events.push_back(MakeAuthenticationEvent(id, device));
        }
    }
    return events;
}

DeviceEvent MakeDisconnectEvent(const DeviceIdentity& device) {
    if (device.type == DEV_MGR_DEVICE_TYPE_HUB) {
        return MakeEvent({DEV_MGR_EVENT_DEVICE_DISCONNECTED, device.type, device.productId, device.vendorId});
    }
    if (device.type == DEV_MGR_DEVICE_TYPE_UNKNOWN) {
        return MakeEvent({DEV_MGR_EVENT_DEVICE_DISCONNECTED, device.type});
    }
    const std::string_view name = CutUtf8(device.name, kNameSize - 1);
    const std::vector<std::uint32_t> words{DEV_MGR_EVENT_DEVICE_DISCONNECTED,
                                           device.type,
                                           device.handle,
                                           device.productId,
                                           device.vendorId,
                                           static_cast<std::uint32_t>(name.size() + 1)};
    if (!IsListed(device.type)) {
        return MakeEvent(words, {name, device.serial});
    }
    return MakeEvent(words, {name, IsStick(device.type) ? device.mountPath : device.node, device.serial});
}

}  // namespace DeviceSimulator
