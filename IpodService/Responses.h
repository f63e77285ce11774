// What the methods' responses have in common.
#pragma once

#include <json/json.h>

/// Sets "jsonrpc" and copies the request's "id", null when it has none.
inline void BeginResponse(const Json::Value& request, Json::Value& response) {
    response["jsonrpc"] = "2.0";
    response["id"] = request["id"];
}

/// The status word of a result.
inline const char* StatusWord(bool success) {
    return success ? "success" : "failure";
}
