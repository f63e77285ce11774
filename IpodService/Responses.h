// What the methods' results have in common.
#pragma once

#include <string>

#include "JsonRpc/ObjectText.h"

/// Appends a result that says no more than whether it worked. True.
inline bool AppendStatus(std::string& result, bool success) {
    result.append(success ? "\"success\"" : "\"failure\"");
    return true;
}

/// Appends a result of one member. True.
template <typename Value>
bool AppendMember(std::string& result, const char* name, const Value& value) {
    Json::Rpc::ObjectText(result).Add(name, value).End();
    return true;
}
