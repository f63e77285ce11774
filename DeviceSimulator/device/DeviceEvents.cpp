#include "DeviceSimulator/device/DeviceEvents.h"

#include <algorithm>

#include "DeviceSimulator/device/FieldText.h"

namespace DeviceSimulator {

namespace {

/// Of a stick's name in the connect event, the mount path following at once.
constexpr std::size_t kStickNameSize = 255;
constexpr std::size_t kTextSize = sizeof(DeviceEvent::text);

DeviceEvent MakeStickConnectEvent(const DeviceIdentity& device) {
    DeviceEvent event = MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, DEV_MGR_MOUNT_PASSED,
                                   device.productId, device.vendorId, device.handle});
    const std::span<char> text(event.text, kTextSize);
    CopyText(text.first(kStickNameSize), device.name);
    CopyText(text.subspan(kStickNameSize), device.mountPath);
    CopyText(text.subspan(kStickNameSize + device.mountPath.size() + 1), device.serial);
    return event;
}

DeviceEvent MakeConnectEvent(const DeviceIdentity& device) {
    if (IsStick(device.type)) {
        return MakeStickConnectEvent(device);
    }
    const std::string_view name = CutText(device.name, kStickNameSize - 1);
    switch (device.type) {
        case DEV_MGR_DEVICE_TYPE_NO_MEDIUM:
            return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, 0, device.productId,
                              device.vendorId, device.handle},
                             {name, device.mountPath, device.serial});
        case DEV_MGR_DEVICE_TYPE_HUB:
            return MakeEvent(
                {DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, device.productId, device.vendorId});
        case DEV_MGR_DEVICE_TYPE_UNKNOWN:
        case DEV_MGR_DEVICE_TYPE_UNSUPPORTED:
            return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type});
        default:
            break;
    }
    const bool isMtp = device.type >= DEV_MGR_DEVICE_TYPE_MTP_2WIRE;
    const auto nameLength = isMtp ? static_cast<std::uint32_t>(name.size()) : 0;
    return MakeEvent({DEV_MGR_EVENT_DEVICE_CONNECTED, device.type, device.handle, device.productId,
                      device.vendorId, nameLength},
                     {name, device.node, device.serial});
}

}  // namespace

DeviceEvent MakeEvent(std::initializer_list<std::uint32_t> words,
                      std::initializer_list<std::string_view> texts) {
    return PackEvent({words.begin(), words.size()}, {texts.begin(), texts.size()});
}

DeviceEvent PackEvent(std::span<const std::uint32_t> words, std::span<const std::string_view> texts) {
    DeviceEvent event{};
    std::copy_n(words.begin(), std::min(words.size(), std::size(event.words)), std::begin(event.words));
    std::span<char> room(event.text, kTextSize);
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
    const std::string_view name = CutText(device.name, kStickNameSize - 1);
    const auto second = static_cast<std::uint32_t>(name.size() + 1);
    const std::initializer_list<std::uint32_t> words{DEV_MGR_EVENT_DEVICE_DISCONNECTED,
                                                     device.type,
                                                     device.handle,
                                                     device.productId,
                                                     device.vendorId,
                                                     second};
    if (!IsListed(device.type)) {
        return MakeEvent(words, {name, device.serial});
    }
    return MakeEvent(words, {name, IsStick(device.type) ? device.mountPath : device.node, device.serial});
}

}  // namespace DeviceSimulator
