# Links the service with a platform library of another name and without a SONAME, and looks at what it needs then.
# Takes COMPILER, GENERATOR, MAKE_PROGRAM, FOLDER to work in and ARCHIVES, the service's own.

set(source "${CMAKE_CURRENT_LIST_DIR}/ImportedLibrary")
file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")

function(run)
    execute_process(COMMAND ${ARGN} RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        string(JOIN " " command ${ARGN})
        message(FATAL_ERROR "${command}\n${output}")
    endif()
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(make_platform_library file)
    file(READ "${source}/../../../DeviceManager/DeviceManager.h" header)
    string(REGEX MATCHALL "(eDev[mM]gr[A-Za-z]+|eSelect[A-Za-z]+)\\(" functions "${header}")
    list(REMOVE_DUPLICATES functions)
    list(TRANSFORM functions REPLACE "(.*)\\(" "extern \"C\" void \\1() {}\n")
    string(JOIN "" stubs ${functions})
    file(WRITE "${FOLDER}/stubs.cpp" "${stubs}")
    run("${COMPILER}" -shared -fPIC "${FOLDER}/stubs.cpp" -o "${file}" ${ARGN})
endfunction()

function(configure library)
    execute_process(COMMAND "${CMAKE_COMMAND}" -S "${source}" -B "${FOLDER}/build" -G "${GENERATOR}"
        "-DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM}" "-DCMAKE_CXX_COMPILER=${COMPILER}"
        "-DIPOD_DEVICE_MANAGER_LIBRARY=${library}" "-DARCHIVES=${ARCHIVES}"
        RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    set(status "${status}" PARENT_SCOPE)
    set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_needed_by_name)
    run("${CMAKE_COMMAND}" --build "${FOLDER}/build")
    run(readelf -d "${FOLDER}/build/ipod-service")
    if(NOT output MATCHES "\\(NEEDED\\)[^\n]*\\[libdevicemanager\\.so\\]")
        message(FATAL_ERROR "The service does not need libdevicemanager.so:\n${output}")
    endif()
    if(output MATCHES "\\(NEEDED\\)[^\n]*vips")
        message(FATAL_ERROR "The service needs the image library at its start:\n${output}")
    endif()
    if(output MATCHES "\\(NEEDED\\)[^\n]*/")
        message(FATAL_ERROR "The service needs a library by a path of the build:\n${output}")
    endif()
endfunction()

configure("${FOLDER}/missing.so")
if(status EQUAL 0 OR NOT output MATCHES "is no file")
    message(FATAL_ERROR "A platform library that is not there configures:\n${output}")
endif()

make_platform_library("${FOLDER}/platform-1.0.so")
configure("${FOLDER}/platform-1.0.so")
if(NOT status EQUAL 0)
    message(FATAL_ERROR "${output}")
endif()
expect_needed_by_name()

make_platform_library("${FOLDER}/platform-1.0.so" -Wl,-soname,libdevicemanager.so)
expect_needed_by_name()
