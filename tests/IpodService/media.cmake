# Album art, the audio stream, and the sound that comes out of it.

find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
pkg_check_modules(VIPS REQUIRED IMPORTED_TARGET vips-cpp)

add_executable(album_art_test AlbumArtFetchTest.cpp AlbumArtTest.cpp TestPictures.cpp)
target_link_libraries(album_art_test PRIVATE
    manager_fixture PkgConfig::VIPS JPEG::JPEG PNG::PNG GTest::gmock_main)
get_target_property(vips_includes PkgConfig::VIPS INTERFACE_INCLUDE_DIRECTORIES)
target_include_directories(album_art_test SYSTEM PRIVATE ${vips_includes})
gtest_discover_tests(album_art_test DISCOVERY_MODE PRE_TEST PROPERTIES TIMEOUT 60)

add_executable(stream_test SoundCard.cpp StreamTest.cpp)
target_link_libraries(stream_test PRIVATE manager_fixture GTest::gmock_main)
target_compile_definitions(stream_test PRIVATE ALSA_CONFIG="${DEVICE_SIMULATOR_ALSA_CONFIG}")
add_dependencies(stream_test simulated_sound)
# A registry of GStreamer's own below the build folder: none is written to anybody's home.
gtest_discover_tests(stream_test DISCOVERY_MODE PRE_TEST PROPERTIES
    TIMEOUT 120
    ENVIRONMENT "GST_REGISTRY=${PROJECT_BINARY_DIR}/gstreamer-registry.bin")
