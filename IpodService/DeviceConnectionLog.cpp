#include "IpodService/DeviceConnectionLog.h"

#include "IpodService/DeviceKind.h"
#include "IpodService/DeviceManagerNames.h"
#include "IpodService/LogText.h"
#include "ServiceUtil/Logger.h"

namespace {

constexpr u32 kNameField = 255;  ///< bytes that a mass-storage device's name has before its mount path

void LogNamed(const char* label, std::string_view text) {
    LOG_INFO("%s%s\n", label, LogText(text).c_str());
}

void LogProductAndVendor(const DeviceEventView& event) {
    LOG_INFO("Product Id is 0x%x\n", event.Word(3));
    LOG_INFO("Vendor Id is 0x%x\n", event.Word(4));
}

void LogNoMedium(const DeviceEventView& event) {
    LOG_INFO("MASS STORAGE DEVICE CONNECTED WITHOUT MEDIA.\n");
    LogNamed("Device name is: ", event.Text(0));
    LogProductAndVendor(event);
    LogNamed("Mount path is: ", event.Text(1));
    LOG_INFO("PLEASE INSERT MEDIA TO CONTINUE\n");
    LOG_INFO("Probable Device handle is %d\n\n", event.Signed(5));
}

// The name may have two bytes a character: single zero bytes are part of it.
void LogWideName(const DeviceEventView& event) {
    for (u32 i = 0; i < kNameField; ++i) {
        if (event.Byte(i) == 0 && event.Byte(i + 1) == 0) {
            break;
        }
        LOG_INFO("%c", event.Byte(i));
    }
}

void LogMassStorage(const DeviceEventView& event) {
    LOG_INFO("Mass storage device is connected. Type is %s\n", DeviceTypeName(event.Word(1)));
    if (event.Word(2) == DEV_MGR_MOUNT_FAILED) {
        LOG_INFO("Mount failed");
    }
    if (event.Word(2) != DEV_MGR_MOUNT_PASSED) {
        return;
    }
    LOG_INFO("Mount passed.\n");
    LOG_INFO("Device name is: ");
    LogWideName(event);
    LOG_INFO("\n");
    LogProductAndVendor(event);
    LOG_INFO("Device handle is %d\n", event.Signed(5));
    LogNamed("Mount path is: ", event.TextAt(kNameField));
    LogNamed("Serial     is: ", event.TextAfter(kNameField));
}

void LogMtp(const DeviceEventView& event) {
    LogNamed("Device name is: ", event.Text(0));
    LOG_INFO("Name length is %d\n", event.Signed(5));
    LogProductAndVendor(event);
    LOG_INFO("Device handle is %d\n", event.Signed(2));
    LogNamed("Device Node is ", event.Text(1));
    LogNamed("Device Serial is ", event.Text(2));
}

void LogIap(const DeviceEventView& event) {
    LOG_INFO("Device is iAP %s\n", DeviceTypeName(event.Word(1)));
    LogNamed("Device name is: ", event.Text(0));
    LogProductAndVendor(event);
    LOG_INFO("Device handle is %d\n", event.Signed(2));
    LogNamed("Device node is ", event.Text(1));
    LogNamed("Device Serial is ", event.Text(2));
}

void LogHub(const char* what, const DeviceEventView& event) {
    LOG_INFO("PID of %s HUB is 0x%x\n", what, event.Word(2));
    LOG_INFO("VID of %s HUB is 0x%x\n", what, event.Word(3));
}

void LogGoneDevice(const DeviceEventView& event) {
    const u32 type = event.Word(1);
    const u32 second = event.Word(5);
    LOG_INFO(
        "Type of disconnected device is %s\nHandle of disconnected device is %d\n"
        "Product ID of disconnected device is 0x%x\nVendor ID of disconnected device is 0x%x\n"
        "Name of disconnected device is %s\n",
        DeviceTypeName(type), event.Signed(2), event.Word(3), event.Word(4), LogText(event.Text(0)).c_str());
    if (DeviceKind::IsMassStorage(type)) {
        LogNamed("Mount path of discoonected device is ", event.TextAt(second));
    } else if (type <= DEV_MGR_DEVICE_TYPE_MTP_1WIRE_ZUNE) {
        LogNamed("Node of discoonected MTP/iAP device is ", event.TextAt(second));
    }
    LogNamed("Serial of disconected device is ",
             type <= DEV_MGR_DEVICE_TYPE_MTP_1WIRE_ZUNE ? event.TextAfter(second) : event.TextAt(second));
    LOG_INFO("if you are in FS browse, press \"x\" and come out as device is disconnected\n");
    LOG_INFO("if you are in iPod Menu, press \"c\" to return to main menu\n\n");
}

}  // namespace

void DeviceEventLog::LogConnected(const DeviceEventView& event) {
    const u32 type = event.Word(1);
    if (type == DEV_MGR_DEVICE_TYPE_NO_MEDIUM) {
        LogNoMedium(event);
    } else if (DeviceKind::IsMassStorage(type)) {
        LogMassStorage(event);
    } else if (type == DEV_MGR_DEVICE_TYPE_MTP_1WIRE_NORMAL) {
        LogMtp(event);
    } else if (DeviceKind::IsIap(type) || DeviceKind::IsIap2(type)) {
        LogIap(event);
    } else if (type == DEV_MGR_DEVICE_TYPE_UNSUPPORTED) {
        LOG_INFO("Connected device is unsupported.\n");
    } else if (type == DEV_MGR_DEVICE_TYPE_UNKNOWN) {
        LOG_INFO("USB device is connected. Yet unknown. Reading.\n");
        LOG_INFO("Another Connected event will be received if connected device is supported.\n");
    } else if (type == DEV_MGR_DEVICE_TYPE_HUB) {
        LOG_INFO("HUB is connected.\n");
        LogHub("connected", event);
    }
}

void DeviceEventLog::LogDisconnected(const DeviceEventView& event) {
    const u32 type = event.Word(1);
    if (type == DEV_MGR_DEVICE_TYPE_HUB) {
        LOG_INFO("HUB is disconnected\n");
        LogHub("disconnected", event);
    } else if (type == DEV_MGR_DEVICE_TYPE_UNKNOWN) {
        LOG_INFO("Unknown device disconnected\n");
    } else {
        LogGoneDevice(event);
    }
}
