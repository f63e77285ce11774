// What the view asks of answers beyond IpodControl/Fields.h.
#pragma once

#include <json/json.h>

#include <optional>
#include <string>

#include "IpodControl/Fields.h"

namespace IpodControl::PlayerView {

/// Empty when it is no text; cut at a length that no name has.
std::string TextIn(const Json::Value& object, const char* name);
std::optional<bool> FlagIn(const Json::Value& object, const char* name);

}  // namespace IpodControl::PlayerView
