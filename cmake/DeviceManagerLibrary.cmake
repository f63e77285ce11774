# `device_manager`, the library that the service is linked with: the platform's own where
# IPOD_DEVICE_MANAGER_LIBRARY names it, else the simulated player.

if(IPOD_DEVICE_MANAGER_LIBRARY)
    if(NOT EXISTS "${IPOD_DEVICE_MANAGER_LIBRARY}" OR IS_DIRECTORY "${IPOD_DEVICE_MANAGER_LIBRARY}")
        message(FATAL_ERROR "IPOD_DEVICE_MANAGER_LIBRARY is no file: ${IPOD_DEVICE_MANAGER_LIBRARY}")
    endif()
    # A library without a SONAME is recorded in the service as it was found: by the linker's search and under
    # the name that the unit's loader looks for, whatever the file here is called.
    get_filename_component(device_manager_file "${IPOD_DEVICE_MANAGER_LIBRARY}" REALPATH)
    set(device_manager_link "${PROJECT_BINARY_DIR}/platform/libdevicemanager.so")
    file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/platform")
    file(CREATE_LINK "${device_manager_file}" "${device_manager_link}" SYMBOLIC)
    add_library(device_manager SHARED IMPORTED GLOBAL)
    set_target_properties(device_manager PROPERTIES
        IMPORTED_LOCATION "${device_manager_link}"
        IMPORTED_NO_SONAME TRUE
        INTERFACE_LINK_LIBRARIES device_manager_interface)
elseif(IPOD_BUILD_SIMULATOR)
    add_library(device_manager ALIAS device_simulator)
else()
    message(FATAL_ERROR "Without the simulator, name the library to link: -DIPOD_DEVICE_MANAGER_LIBRARY=<path>")
endif()
