# Tests of the simulated player's music library.

find_package(GTest REQUIRED)
find_package(ZLIB REQUIRED)
include(GoogleTest)

add_executable(device_simulator_library_tests)
foreach(source IN ITEMS
        LibraryBuilderTest.cpp
        LibraryMusicFolderTest.cpp
        LibraryPictureTest.cpp
        LibraryTest.cpp
        LibraryTestFiles.cpp)
    target_sources(device_simulator_library_tests PRIVATE "${CMAKE_CURRENT_LIST_DIR}/${source}")
endforeach()
target_link_libraries(device_simulator_library_tests
    PRIVATE demo_music device_simulator_library GTest::gtest_main ZLIB::ZLIB)
gtest_discover_tests(device_simulator_library_tests DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 120)
