// What libdevicemanager.so exports besides the C interface.
#pragma once

#define DEVICE_SIMULATOR_API __attribute__((visibility("default")))
