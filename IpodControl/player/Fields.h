// Members of the service's answers, of whatever shape these turn out to be.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <string>

namespace IpodControl::PlayerView {

/// Null when `object` is none or has no such member.
const Json::Value& Member(const Json::Value& object, const char* name);

/// Empty when it is no text; cut at a length that no name has.
std::string TextIn(const Json::Value& object, const char* name);
/// None when it is no whole number.
std::optional<std::int64_t> NumberIn(const Json::Value& object, const char* name);
std::optional<bool> FlagIn(const Json::Value& object, const char* name);

}  // namespace IpodControl::PlayerView
