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

}  // namespace

DeviceEvent MakePlayerEvent(const PlayerEvent& event, std::uint32_t handle) {
    return MakeEvent({event.id, event.value, 0, 0, 0, handle});
}

DeviceIdentity MakeIdentity(const DeviceDescription& device, std::uint32_t handle) {
    const DeviceKind& kind = KindOf(device.type);
    DeviceIdentity identity;
    identity.type = device.type;
    identity.handle = handle;
    identity.productId = device.productId.value_or(kFirstProductId + device.type);
    identity.vendorId = device.vendorId.value_or(kVendorId);
    identity.name = device.name.empty() ? std::string(kind.name) : device.name;
    identity.node = std::string(kind.node) + std::to_string(handle);
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

void Device::Close(std::uint32_t process, TimePoint now, bool playsOn) {
    if (openings.erase(process) == 0 || !openings.empty()) {
        return;
    }
    if (playsOn) {
        player.EndSeek(now);
    } else {
        player.Rest(now);
    }
    database.Abort();
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
