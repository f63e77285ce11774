# The simulated player: a music folder's first and later scans, how soon a player with it is ready, and what a call
# costs that goes to its process.

add_executable(bench_music_folder simulator/MusicFolder.cpp)
target_link_libraries(bench_music_folder PRIVATE demo_music)
set_target_properties(bench_music_folder PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/DeviceSimulator")  # beside the media program

add_executable(bench_player_start simulator/PlayerStart.cpp)
target_link_libraries(bench_player_start PRIVATE project_options device_simulator)

add_executable(bench_device_call simulator/DeviceCall.cpp)
target_link_libraries(bench_device_call PRIVATE project_options device_simulator)
