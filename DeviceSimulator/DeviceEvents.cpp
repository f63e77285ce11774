#include "DeviceSimulator/DeviceEvents.h"

#include <algorithm>

#include "DeviceSimulator/Text.h"

namespace DeviceSimulator {

namespace {

constexpr std::uint32_t kMounted = 6;
/// Of a stick's name in the connect event, the mount path following at once.
constexpr std::size_t kStickNameSize = 255;
constexpr std::size_t kTextSize = sizeof(DeviceEvent::text);

DeviceEvent MakeStickConnectEvent(const DeviceIdentity& device) {
    DeviceEvent event = MakeEvent(
        {kDeviceConnected, device.type, kMounted, device.productId, device.vendorId, device.handle});
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
        case kNoMedium:
            return MakeEvent(
                {kDeviceConnected, device.type, 0, device.productId, device.vendorId, device.handle},
                {name, device.mountPath, device.serial});
        case kHub:
            return MakeEvent({kDeviceConnected, device.type, device.productId, device.vendorId});
        case kUnknownDevice:
        case kUnsupportedDevice:
            return MakeEvent({kDeviceConnected, device.type});
        default:
            break;
    }
    const bool isMtp = device.type >= kMtp;
    const auto nameLength = isMtp ? static_cast<std::uint32_t>(name.size()) : 0;
    return MakeEvent(
        {kDeviceConnected, device.type, device.handle, device.productId, device.vendorId, nameLength},
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
        for (const EventId id :
             {kAuthenticationStarted, isLocked ? kAuthenticationLocked : kAuthenticationSucceeded}) {
            events.push_back(MakeAuthenticationEvent(id, device));
        }
    }
    return events;
}

DeviceEvent MakeDisconnectEvent(const DeviceIdentity& device) {
    if (device.type == kHub) {
        return MakeEvent({kDeviceDisconnected, device.type, device.productId, device.vendorId});
    }
    if (device.type == kUnknownDevice) {
        return MakeEvent({kDeviceDisconnected, device.type});
    }
    const std::string_view name = CutText(device.name, kStickNameSize - 1);
    const auto second = static_cast<std::uint32_t>(name.size() + 1);
    const std::initializer_list<std::uint32_t> words{kDeviceDisconnected, device.type,     device.handle,
                                                     device.productId,    device.vendorId, second};
    if (!IsListed(device.type)) {
        return MakeEvent(words, {name, device.serial});
    }
    return MakeEvent(words, {name, IsStick(device.type) ? device.mountPath : device.node, device.serial});
}

}  // namespace DeviceSimulator
