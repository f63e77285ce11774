// The groups that device types fall into.
#pragma once

#include "DeviceManager/DeviceManager.h"

namespace DeviceKind {

constexpr bool IsMassStorage(u32 type) {
    return type < DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
}
constexpr bool IsIap(u32 type) {
    return type >= DEV_MGR_DEVICE_TYPE_IAP_2WIRE && type <= DEV_MGR_DEVICE_TYPE_IAP_BT;
}
constexpr bool IsIap2(u32 type) {
    return type >= DEV_MGR_DEVICE_TYPE_IAP2_2WIRE && type <= DEV_MGR_DEVICE_TYPE_IAP2_BT;
}

}  // namespace DeviceKind
