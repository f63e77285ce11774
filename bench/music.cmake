# A music folder of the simulated player: first and later scans, and how soon a player with it is ready.

add_executable(bench_music_folder MusicFolder.cpp)
target_link_libraries(bench_music_folder PRIVATE demo_music device_simulator_library)

add_executable(bench_player_start PlayerStart.cpp)
target_link_libraries(bench_player_start PRIVATE project_options device_simulator)
