# Headers that most sources read, read once: one set for the libraries, one for the tests. With g++ alone: the clang
# build reads every source by itself, and so finds what a source forgets to include.

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU" OR CMAKE_DISABLE_PRECOMPILE_HEADERS)
    return()
endif()

file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/precompiled.cpp" CONTENT "int main() {}\n")
set(headers <algorithm> <atomic> <chrono> <functional> <map> <memory> <mutex> <optional> <string> <string_view>
    <thread> <vector>)

add_library(precompiled_for_libraries OBJECT "${PROJECT_BINARY_DIR}/precompiled.cpp")
target_link_libraries(precompiled_for_libraries PRIVATE project_options PkgConfig::JSONCPP)
target_precompile_headers(precompiled_for_libraries PRIVATE ${headers} <json/json.h>)
foreach(target IN ITEMS
        device_simulator_control device_simulator_device device_simulator_run
        ipod_control_client ipod_control_commands ipod_control_view json_rpc)
    if(TARGET ${target})
        target_precompile_headers(${target} REUSE_FROM precompiled_for_libraries)
    endif()
endforeach()
# Sets of their own: what GStreamer asks of the compiler changes what the headers say, and the music library knows no
# JSON.
target_precompile_headers(ipod_service_core PRIVATE ${headers} <json/json.h>)
if(TARGET device_simulator_music)
    target_precompile_headers(device_simulator_music PRIVATE ${headers})
endif()

if(NOT BUILD_TESTING)
    return()
endif()
# Built as the programs are that use it: position-independent executables.
add_executable(precompiled_for_tests EXCLUDE_FROM_ALL "${PROJECT_BINARY_DIR}/precompiled.cpp")
target_link_libraries(precompiled_for_tests PRIVATE project_options GTest::gmock GTest::gtest)
target_precompile_headers(precompiled_for_tests PRIVATE ${headers} <gmock/gmock.h> <gtest/gtest.h>)
foreach(target IN ITEMS
        device_simulator_test end_to_end_test ipod_control_test
        ipod_service_browse_test ipod_service_manager_test
        json_rpc_test service_util_test)
    if(TARGET ${target})
        target_precompile_headers(${target} REUSE_FROM precompiled_for_tests)
    endif()
endforeach()
