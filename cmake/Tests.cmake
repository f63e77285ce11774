# What every room's tests and the stress programs need.

find_package(GTest REQUIRED)
include(GoogleTest)

# Sanitizers slow everything down, so waits and time limits grow with them.
set(TEST_TIME_SCALE 1)
if(IPOD_SANITIZER)
    set(TEST_TIME_SCALE 6)
endif()

add_library(test_support INTERFACE)
target_compile_definitions(test_support INTERFACE TEST_TIME_SCALE=${TEST_TIME_SCALE})
target_link_libraries(test_support INTERFACE project_options)

# The one that the system's packages are for.
find_program(PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH REQUIRED)

# Of tests that talk to the service: what goes over the wire is kept, and compared with the contract in the end.
set(IPOD_WIRE_FOLDER "${PROJECT_BINARY_DIR}/wire")
set(RECORDED FIXTURES_REQUIRED wire ENVIRONMENT "IPOD_WIRE_FOLDER=${IPOD_WIRE_FOLDER}")
