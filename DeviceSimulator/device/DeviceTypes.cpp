#include "DeviceSimulator/device/DeviceTypes.h"

#include <algorithm>
#include <array>

namespace DeviceSimulator {

namespace {

struct TypeWord {
    std::string_view word;
    std::uint32_t type;
};

constexpr auto kTypeWords = std::to_array<TypeWord>({{"iap2", DEV_MGR_DEVICE_TYPE_IAP2_2WIRE},
                                                     {"iap", DEV_MGR_DEVICE_TYPE_IAP_2WIRE},
                                                     {"stick", DEV_MGR_DEVICE_TYPE_USB_FAT_32},
                                                     {"mtp", DEV_MGR_DEVICE_TYPE_MTP_2WIRE},
                                                     {"unknown", DEV_MGR_DEVICE_TYPE_UNKNOWN},
                                                     {"hub", DEV_MGR_DEVICE_TYPE_HUB},
                                                     {"no-medium", DEV_MGR_DEVICE_TYPE_NO_MEDIUM},
                                                     {"unsupported", DEV_MGR_DEVICE_TYPE_UNSUPPORTED}});

}  // namespace

std::optional<std::uint32_t> FindDeviceType(std::string_view word) {
    const auto* found = std::find_if(kTypeWords.begin(), kTypeWords.end(),
                                     [&](const TypeWord& entry) { return entry.word == word; });
    return found == kTypeWords.end() ? std::nullopt : std::optional(found->type);
}

std::string_view DeviceTypeWord(std::uint32_t type) {
    // A kind's word stands for its most usual type.
    std::uint32_t usual = type;
    if (IsStick(type)) {
        usual = DEV_MGR_DEVICE_TYPE_USB_FAT_32;
    } else if (IsPlayer(type)) {
        usual = IsIap2(type) ? DEV_MGR_DEVICE_TYPE_IAP2_2WIRE : DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
    } else if (IsListed(type)) {
        usual = DEV_MGR_DEVICE_TYPE_MTP_2WIRE;
    }
    const auto* found = std::find_if(kTypeWords.begin(), kTypeWords.end(),
                                     [&](const TypeWord& entry) { return entry.type == usual; });
    return found == kTypeWords.end() ? std::string_view{} : found->word;
}

}  // namespace DeviceSimulator
