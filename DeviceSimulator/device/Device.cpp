#include "DeviceSimulator/device/Device.h"

#include <algorithm>
#include <random>
#include <utility>

#include "DeviceSimulator/device/DeviceEvents.h"
#include "DeviceSimulator/device/FieldText.h"

namespace DeviceSimulator {

namespace {

constexpr std::uint32_t kVendorId = 0xF155;
constexpr std::uint32_t kFirstProductId = 0x1200;

const char* LikelyName(std::uint32_t type) {
    if (IsStick(type)) {
        return "MUSIC STICK";
    }
    if (IsIap2(type)) {
        return "Phone";
    }
    if (IsPlayer(type)) {
        return "Player";
    }
    if (type <= DEV_MGR_DEVICE_TYPE_MTP_1WIRE_ZUNE) {
        return "Media Player";
    }
    return type == DEV_MGR_DEVICE_TYPE_HUB ? "Hub" : "Device";
}

std::string LikelyNode(std::uint32_t type, std::uint32_t handle) {
    const std::string number = std::to_string(handle);
    if (IsStick(type)) {
        return "/dev/usbdisk" + number;
    }
    return (IsPlayer(type) ? "/dev/iap" : "/dev/usb") + number;
}

}  // namespace

DeviceEvent MakePlayerEvent(const PlayerEvent& event, std::uint32_t handle) {
    return MakeEvent({event.id, event.value, 0, 0, 0, handle});
}

DeviceIdentity MakeIdentity(const DeviceDescription& device, std::uint32_t handle) {
    DeviceIdentity identity;
    identity.type = device.type;
    identity.handle = handle;
    identity.productId = device.productId.value_or(kFirstProductId + device.type);
    identity.vendorId = device.vendorId.value_or(kVendorId);
    identity.name = device.name.empty() ? LikelyName(device.type) : device.name;
    identity.node = LikelyNode(device.type, handle);
    identity.serial = "SIM" + std::to_string(1'000'000'000U + handle % 1'000'000'000U);
    if (IsStick(device.type) || device.type == DEV_MGR_DEVICE_TYPE_NO_MEDIUM) {
        identity.mountPath = "/media/usb" + std::to_string(handle);
    }
    identity.hub = device.hub;
    return identity;
}

DeviceRecord MakeRecord(const DeviceIdentity& identity) {
    DeviceRecord record{};
    CopyText(record.name, identity.name);
    CopyText(record.node, identity.node);
    CopyText(record.serial, identity.serial);
    record.handle = identity.handle;
    record.productId = identity.productId;
    record.vendorId = identity.vendorId;
    record.type = identity.type;
    CopyText(record.mountPath, identity.mountPath);
    return record;
}

Device::Device(DeviceIdentity who, Character how, std::uint64_t number)
    : identity(std::move(who)),
      character(std::move(how)),
      instance(number),
      player(character.seed ? *character.seed : std::random_device{}()) {}

void Device::Close(std::uint32_t process, TimePoint now) {
    if (openings.erase(process) != 0 && openings.empty()) {
        player.Rest(now);
        database.Abort();
    }
}

void Device::Abandon(std::uint32_t process, TimePoint now) {
    if (openings.erase(process) != 0 && openings.empty()) {
        player.EndSeek(now);
        database.Abort();
    }
}

std::vector<DeviceEvent> Device::TakeEvents(TimePoint now) {
    std::vector<DeviceEvent> events;
    if (openings.empty()) {
        // Nobody hears of the rate that it plays at by itself.
        player.ForgetSampleRate();
    }
    for (const std::uint32_t percentage : database.Advance(now)) {
        events.push_back(
            MakePlayerEvent({DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO, percentage}, identity.handle));
    }
    player.Advance(now);
    for (const PlayerEvent& event : player.TakeEvents()) {
        events.push_back(MakePlayerEvent(event, identity.handle));
    }
    return events;
}

std::optional<TimePoint> Device::NextDue() const {
    const auto build = database.NextDue();
    const auto play = player.NextDue();
    return build && play ? std::min(build, play) : (build ? build : play);
}

}  // namespace DeviceSimulator
