// What a JSON value has under a name, whatever it is: nothing here throws.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <string>

namespace IpodControl {

inline const Json::Value& Field(const Json::Value& value, const char* name) {
    static const Json::Value none;
    if (!value.isObject()) {
        return none;
    }
    const Json::Value* const found = value.find(name, name + std::char_traits<char>::length(name));
    return found != nullptr ? *found : none;
}

inline bool BoolField(const Json::Value& value, const char* name) {
    const Json::Value& field = Field(value, name);
    return field.isBool() && field.asBool();
}

inline std::string TextField(const Json::Value& value, const char* name) {
    const Json::Value& field = Field(value, name);
    return field.isString() ? field.asString() : std::string();
}

/// None when it is no whole number.
inline std::optional<std::int64_t> IntegerField(const Json::Value& value, const char* name) {
    const Json::Value& field = Field(value, name);
    return field.isInt64() ? std::optional<std::int64_t>(field.asInt64()) : std::nullopt;
}

}  // namespace IpodControl
