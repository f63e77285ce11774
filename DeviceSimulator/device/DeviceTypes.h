// The kinds of device that the simulated player tells apart.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "DeviceManager/DeviceManagerValues.h"

namespace DeviceSimulator {

constexpr bool IsStick(std::uint32_t type) {
    return type <= DEV_MGR_DEVICE_TYPE_SD_CARD_EXT3;
}
constexpr bool IsIap2(std::uint32_t type) {
    return type >= DEV_MGR_DEVICE_TYPE_IAP2_2WIRE && type <= DEV_MGR_DEVICE_TYPE_IAP2_BT;
}
/// What the player functions work with.
constexpr bool IsPlayer(std::uint32_t type) {
    return type >= DEV_MGR_DEVICE_TYPE_IAP_2WIRE && type <= DEV_MGR_DEVICE_TYPE_IAP2_BT;
}
/// What the device list shows; hubs and the like are only told of in events.
constexpr bool IsListed(std::uint32_t type) {
    return type <= DEV_MGR_DEVICE_TYPE_MTP_1WIRE_ZUNE;
}

/// What the types of one kind have in common.
struct DeviceKind {
    std::string_view word;  ///< empty for the kind of a type that has none
    std::uint32_t type;     ///< the most usual one
    std::string_view name;  ///< that such a device is likely to have
    std::string_view node;  ///< as the name; the handle follows
};

const DeviceKind& KindOf(std::uint32_t type);
/// The device type of a word such as "iap2" or "stick".
std::optional<std::uint32_t> FindDeviceType(std::string_view word);
/// The word for a type, or for one of its kind; empty when there is none.
inline std::string_view DeviceTypeWord(std::uint32_t type) {
    return KindOf(type).word;
}

}  // namespace DeviceSimulator
