# `device_manager`, the library that the service is linked with: the platform's own where
# IPOD_DEVICE_MANAGER_LIBRARY names it, else the simulated player.

if(IPOD_DEVICE_MANAGER_LIBRARY)
    add_library(device_manager SHARED IMPORTED GLOBAL)
    set_target_properties(device_manager PROPERTIES
        IMPORTED_LOCATION "${IPOD_DEVICE_MANAGER_LIBRARY}"
        INTERFACE_LINK_LIBRARIES device_manager_interface)
elseif(IPOD_BUILD_SIMULATOR)
    add_library(device_manager ALIAS device_simulator)
else()
    message(FATAL_ERROR "Without the simulator, name the library to link: -DIPOD_DEVICE_MANAGER_LIBRARY=<path>")
endif()
