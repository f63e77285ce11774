# The conversion of album art against the JPEG library alone, and the cost of the audio stream.

find_package(JPEG REQUIRED)
add_executable(bench_album_art AlbumArt.cpp AlbumArtWorst.cpp)
target_link_libraries(bench_album_art PRIVATE ipod_service_core device_simulator_embedded JPEG::JPEG)

add_executable(bench_audio_stream AudioStream.cpp)
target_link_libraries(bench_audio_stream PRIVATE ipod_service_core device_simulator_embedded)
target_compile_definitions(bench_audio_stream PRIVATE ALSA_CONFIG="${DEVICE_SIMULATOR_ALSA_CONFIG}")
add_dependencies(bench_audio_stream simulated_sound)
