// What a JSON value has under a name, whatever it is: nothing here throws.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace IpodControl {

/// Null where there is none.
inline const Json::Value& Member(const Json::Value& value, std::string_view name) {
    static const Json::Value none;
    const Json::Value* const found =
        value.isObject() ? value.find(name.data(), name.data() + name.size()) : nullptr;
    return found != nullptr ? *found : none;
}

/// None when it is no boolean.
inline std::optional<bool> FlagMember(const Json::Value& value, std::string_view name) {
    const Json::Value& member = Member(value, name);
    return member.isBool() ? std::optional(member.asBool()) : std::nullopt;
}

inline bool IsTrueMember(const Json::Value& value, std::string_view name) {
    return FlagMember(value, name).value_or(false);
}

/// Empty when it is no text.
inline std::string TextMember(const Json::Value& value, std::string_view name) {
    const Json::Value& member = Member(value, name);
    return member.isString() ? member.asString() : std::string();
}

/// None when it is no whole number.
inline std::optional<std::int64_t> IntegerMember(const Json::Value& value, std::string_view name) {
    const Json::Value& member = Member(value, name);
    return member.isInt64() ? std::optional<std::int64_t>(member.asInt64()) : std::nullopt;
}

}  // namespace IpodControl
