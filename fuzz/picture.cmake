# The music library's picture path.

add_executable(fuzz-picture "${CMAKE_CURRENT_LIST_DIR}/PictureFuzzer.cpp")
foreach(source IN ITEMS PictureCover.cpp PictureJpeg.cpp PicturePng.cpp)
    target_sources(fuzz-picture PRIVATE "${PROJECT_SOURCE_DIR}/DeviceSimulator/${source}")
endforeach()
target_compile_options(fuzz-picture PRIVATE -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined)
target_link_options(fuzz-picture PRIVATE -fsanitize=fuzzer,address,undefined)
target_link_libraries(fuzz-picture PRIVATE project_options PkgConfig::JPEG PkgConfig::PNG)
