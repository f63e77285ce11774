#include "DeviceSimulator/device/DeviceTypes.h"

#include <algorithm>
#include <iterator>

namespace DeviceSimulator {

namespace {

constexpr DeviceKind kKinds[] = {
    {"iap2", DEV_MGR_DEVICE_TYPE_IAP2_2WIRE, "Phone", "/dev/iap"},
    {"iap", DEV_MGR_DEVICE_TYPE_IAP_2WIRE, "Player", "/dev/iap"},
    {"stick", DEV_MGR_DEVICE_TYPE_USB_FAT_32, "MUSIC STICK", "/dev/usbdisk"},
    {"mtp", DEV_MGR_DEVICE_TYPE_MTP_2WIRE, "Media Player", "/dev/usb"},
    {"unknown", DEV_MGR_DEVICE_TYPE_UNKNOWN, "Device", "/dev/usb"},
    {"hub", DEV_MGR_DEVICE_TYPE_HUB, "Hub", "/dev/usb"},
    {"no-medium", DEV_MGR_DEVICE_TYPE_NO_MEDIUM, "Device", "/dev/usb"},
    {"unsupported", DEV_MGR_DEVICE_TYPE_UNSUPPORTED, "Device", "/dev/usb"},
};
constexpr DeviceKind kOther{"", 0, "Device", "/dev/usb"};

std::uint32_t MostUsual(std::uint32_t type) {
    if (IsStick(type)) {
        return DEV_MGR_DEVICE_TYPE_USB_FAT_32;
    }
    if (IsPlayer(type)) {
        return IsIap2(type) ? DEV_MGR_DEVICE_TYPE_IAP2_2WIRE : DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
    }
    return IsListed(type) ? static_cast<std::uint32_t>(DEV_MGR_DEVICE_TYPE_MTP_2WIRE) : type;
}

}  // namespace

const DeviceKind& KindOf(std::uint32_t type) {
    const auto* found =
        std::find_if(std::begin(kKinds), std::end(kKinds),
                     [usual = MostUsual(type)](const auto& kind) { return kind.type == usual; });
    return found == std::end(kKinds) ? kOther : *found;
}

std::optional<std::uint32_t> FindDeviceType(std::string_view word) {
    const auto* found = std::find_if(std::begin(kKinds), std::end(kKinds),
                                     [&](const auto& kind) { return kind.word == word; });
    return found == std::end(kKinds) ? std::nullopt : std::optional(found->type);
}

}  // namespace DeviceSimulator
