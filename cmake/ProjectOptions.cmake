# Switches of the build, and `project_options`, which every target of the project links (`project_plain_options`,
# the same without sanitizers, where these would see too little).

set(IPOD_DEVICE_MANAGER_LIBRARY "" CACHE FILEPATH
    "The platform's own libdevicemanager.so to link the service with; empty: the simulated player")
option(IPOD_BUILD_SIMULATOR "Build the simulated player (a libdevicemanager.so) and what is tested with it" ON)
option(IPOD_BUILD_CLIENTS "Build ipodctl, and ipodsim beside the simulated player" ON)
option(IPOD_BUILD_BENCH "Build the programs under bench/" ON)
option(IPOD_BUILD_FUZZERS "Build the programs under fuzz/ (clang only)" OFF)
option(IPOD_WARNINGS_AS_ERRORS "Treat the compiler's warnings as errors" OFF)
set(IPOD_SANITIZER "" CACHE STRING "Sanitizers to build with: empty, address (with undefined) or thread")
set_property(CACHE IPOD_SANITIZER PROPERTY STRINGS "" address thread)

find_program(IPOD_CCACHE ccache)
if(IPOD_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    # What the cache has to be told to keep what is compiled with precompiled headers.
    set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_SLOPPINESS=pch_defines,time_macros "${IPOD_CCACHE}")
endif()

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(JSONCPP REQUIRED IMPORTED_TARGET jsoncpp)

# Asked for rather than left to what the compiler was built to do.
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# `project_flags` is `project_options` without the project's folder to include from: for what is shown only some of it.
add_library(project_plain_flags INTERFACE)
add_library(project_flags INTERFACE)
target_link_libraries(project_flags INTERFACE project_plain_flags)
add_library(project_plain_options INTERFACE)
target_link_libraries(project_plain_options INTERFACE project_plain_flags)
target_include_directories(project_plain_options INTERFACE "${PROJECT_SOURCE_DIR}")
target_compile_features(project_plain_flags INTERFACE cxx_std_20)
target_compile_options(project_plain_flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wold-style-cast -Wshadow -Wformat=2
    -Wnon-virtual-dtor -Woverloaded-virtual
    # Lets ccache see what a precompiled header was made of.
    $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>
    # Log entries carry the source file: its path inside the project, not the build machine's.
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=")
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # Optimising, be it for a sanitizer, g++ 12 sees copies out of bounds inside std::string where texts are put
    # together.
    target_compile_options(project_plain_flags INTERFACE
        -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    # Else a folder on a large file system ends at the first entry whose numbers do not fit 32 bits.
    target_compile_definitions(project_plain_flags INTERFACE _FILE_OFFSET_BITS=64)
endif()
if(IPOD_WARNINGS_AS_ERRORS)
    target_compile_options(project_plain_flags INTERFACE -Werror)
endif()
target_link_libraries(project_plain_flags INTERFACE Threads::Threads)
add_library(project_options INTERFACE)
target_link_libraries(project_options INTERFACE project_plain_options project_flags)

# For the service's own rooms: the compiler checks which thread and which lock a declaration asks for. Tests go
# without, since a test's one thread plays all of the service's.
add_library(project_thread_rules INTERFACE)
target_compile_options(project_thread_rules INTERFACE
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety>
    $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wthread-safety-beta>)

include("${CMAKE_CURRENT_LIST_DIR}/Hardening.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/Footprint.cmake")

if(IPOD_SANITIZER STREQUAL "address")
    set(IPOD_SANITIZER_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
elseif(IPOD_SANITIZER STREQUAL "thread")
    set(IPOD_SANITIZER_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
elseif(IPOD_SANITIZER)
    message(FATAL_ERROR "IPOD_SANITIZER is '${IPOD_SANITIZER}'; it takes address or thread")
endif()
if(IPOD_SANITIZER)
    target_compile_options(project_flags INTERFACE ${IPOD_SANITIZER_FLAGS})
    target_link_options(project_flags INTERFACE ${IPOD_SANITIZER_FLAGS})
    # What a sanitizer adds makes g++ 12 see uninitialised values inside std::regex.
    target_compile_options(project_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()
