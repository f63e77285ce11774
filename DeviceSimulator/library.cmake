# The music library: an object library of its own, so that what tests it compiles it once.
#   DEVICE_SIMULATOR_LIBRARY_SOURCES  for the library that the objects become part of
#   DEVICE_SIMULATOR_LIBRARY_LINKS    what they need

pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(TAGLIB REQUIRED IMPORTED_TARGET taglib)
pkg_check_modules(JPEG REQUIRED IMPORTED_TARGET libjpeg)
pkg_check_modules(PNG REQUIRED IMPORTED_TARGET libpng)
pkg_check_modules(SQLITE REQUIRED IMPORTED_TARGET sqlite3>=3.35)
find_package(Threads REQUIRED)

set(DEVICE_SIMULATOR_LIBRARY_LINKS
    PkgConfig::GLIB PkgConfig::TAGLIB PkgConfig::JPEG PkgConfig::PNG PkgConfig::SQLITE Threads::Threads)

add_library(device_simulator_library OBJECT)
foreach(source IN ITEMS
        BuiltInLibrary.cpp
        BuiltInLibraryNames.cpp
        CoverDrawing.cpp
        LibraryBuilder.cpp
        LibraryFromEnvironment.cpp
        LibraryTables.cpp
        LibraryText.cpp
        MusicCache.cpp
        MusicFolder.cpp
        MusicFolderCovers.cpp
        MusicFolderFiles.cpp
        MusicFolderPlaylist.cpp
        MusicFolderTags.cpp
        PictureCover.cpp
        PictureJpeg.cpp
        PicturePng.cpp
        Sqlite.cpp
        SyntheticLibrary.cpp
        WorkerThreads.cpp)
    target_sources(device_simulator_library PRIVATE "${CMAKE_CURRENT_LIST_DIR}/${source}")
endforeach()
set_target_properties(device_simulator_library PROPERTIES CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
target_link_libraries(device_simulator_library PUBLIC project_options ${DEVICE_SIMULATOR_LIBRARY_LINKS})

set(DEVICE_SIMULATOR_LIBRARY_SOURCES $<TARGET_OBJECTS:device_simulator_library>)

# Music files for the demo and for tests. Only this needs GStreamer.
pkg_check_modules(GSTREAMER REQUIRED IMPORTED_TARGET gstreamer-1.0)

add_library(demo_music STATIC)
foreach(source IN ITEMS DemoMusic.cpp DemoMusicEncoder.cpp DemoMusicMelody.cpp DemoMusicTags.cpp)
    target_sources(demo_music PRIVATE "${CMAKE_CURRENT_LIST_DIR}/tools/${source}")
endforeach()
target_link_libraries(demo_music PUBLIC project_options PkgConfig::GSTREAMER ${DEVICE_SIMULATOR_LIBRARY_LINKS})

add_executable(make-demo-music "${CMAKE_CURRENT_LIST_DIR}/tools/MakeMusic.cpp")
target_link_libraries(make-demo-music PRIVATE demo_music device_simulator_library)
