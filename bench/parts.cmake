# What runs in one process, with Google Benchmark; left out where that is not installed (scripts/bench.sh does).

find_package(benchmark QUIET)
find_package(JPEG QUIET)
if(NOT benchmark_FOUND OR NOT JPEG_FOUND)
    message(STATUS "Without bench_parts: libbenchmark-dev or libjpeg-dev is not installed")
    return()
endif()

add_library(bench_pictures STATIC pictures/Drawing.cpp)
target_link_libraries(bench_pictures PUBLIC project_options device_manager_interface PRIVATE JPEG::JPEG)
add_library(bench_service STATIC parts/Service.cpp)
target_link_libraries(bench_service PUBLIC project_options ipod_service_core quick_player)

add_executable(bench_parts parts/Browse.cpp parts/Pictures.cpp parts/Requests.cpp parts/main.cpp)
target_link_libraries(bench_parts PRIVATE bench_service bench_pictures benchmark::benchmark)

add_executable(bench_growth parts/Growth.cpp)
target_link_libraries(bench_growth PRIVATE bench_service bench_pictures)

add_executable(bench_dear_pictures pictures/DearPictures.cpp)
target_link_libraries(bench_dear_pictures PRIVATE project_options ipod_service_core quick_player JPEG::JPEG)

foreach(program IN ITEMS bench_parts bench_growth bench_dear_pictures)
    target_compile_definitions(${program} PRIVATE PICTURE_MODULE="$<TARGET_FILE:picture_module>")
    add_dependencies(${program} picture_module)
endforeach()
