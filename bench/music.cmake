# A music folder of the simulated player: first and later scans, and how soon a player with it is ready.

add_executable(bench_music_folder MusicFolder.cpp)
target_link_libraries(bench_music_folder PRIVATE demo_music)
set_target_properties(bench_music_folder PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/DeviceSimulator")  # beside the media program

add_executable(bench_player_start PlayerStart.cpp)
target_link_libraries(bench_player_start PRIVATE project_options device_simulator)

# What a call costs that goes to another process.
add_executable(bench_device_call DeviceCall.cpp)
target_link_libraries(bench_device_call PRIVATE project_options device_simulator)
