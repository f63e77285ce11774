# Pages, filter, letter jump and song list of a large library.

add_executable(bench_browse Browse.cpp)
target_link_libraries(bench_browse PRIVATE project_options ipod_service_core device_simulator_embedded)
