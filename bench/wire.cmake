# The service over the wire, beside as little as a server can do. Both are linked statically where nothing forbids
# it: libraries that they shared with the service would halve what these cost it.

add_executable(bench_wire_floor wire/Floor.cpp)
target_link_libraries(bench_wire_floor PRIVATE project_options)

add_library(bench_client STATIC wire/Connection.cpp)
target_link_libraries(bench_client PUBLIC project_options)
add_executable(bench_wire wire/EventRows.cpp wire/FanOutRows.cpp wire/FootprintRows.cpp
    wire/RequestRows.cpp wire/Server.cpp wire/main.cpp)
target_link_libraries(bench_wire PRIVATE bench_client)
target_compile_definitions(bench_wire PRIVATE IPOD_SERVICE="$<TARGET_FILE:ipod-service>"
    FLOOR_PROGRAM="$<TARGET_FILE:bench_wire_floor>" QUICK_PLAYER_FOLDER="$<TARGET_FILE_DIR:quick_player>")
add_dependencies(bench_wire bench_wire_floor ipod-service quick_player)
if(NOT IPOD_SANITIZER)
    target_link_options(bench_wire_floor PRIVATE -static)
    target_link_options(bench_wire PRIVATE -static)
endif()
