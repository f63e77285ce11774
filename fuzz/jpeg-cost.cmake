# The marker walk over pictures of the device, against the decoder.

add_executable(fuzz-jpeg-cost "${CMAKE_CURRENT_LIST_DIR}/JpegCostFuzzer.cpp"
    "${PROJECT_SOURCE_DIR}/IpodService/JpegCost.cpp")
target_compile_options(fuzz-jpeg-cost PRIVATE -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined)
target_link_options(fuzz-jpeg-cost PRIVATE -fsanitize=fuzzer,address,undefined)
target_link_libraries(fuzz-jpeg-cost PRIVATE project_options PkgConfig::JPEG)
