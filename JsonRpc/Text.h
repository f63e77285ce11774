#pragma once

#include <json/value.h>

#include <string>

namespace Json::Rpc {

/// The value as it goes over the wire: one line of compact JSON ended by "\n", keys sorted, characters
/// outside ASCII as \uXXXX. Strings should be well-formed UTF-8; of others the ill-formed bytes are damaged,
/// but the text stays JSON. Any thread.
std::string ToText(const Json::Value& value);

}  // namespace Json::Rpc
