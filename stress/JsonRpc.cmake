# Programs that press the JSON-RPC server, each a list of claims with the figure that was measured.
add_executable(json_rpc_stress JsonRpcClients.cpp JsonRpcMemory.cpp)
target_link_libraries(json_rpc_stress PRIVATE json_rpc)
