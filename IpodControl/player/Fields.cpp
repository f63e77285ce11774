#include "IpodControl/player/Fields.h"

#include <algorithm>

namespace IpodControl::PlayerView {

const Json::Value& Member(const Json::Value& object, const char* name) {
    return object.isObject() ? object[name] : Json::Value::nullSingleton();
}

std::string TextIn(const Json::Value& object, const char* name) {
    constexpr std::size_t kLongest = 1024;
    const Json::Value& value = Member(object, name);
    const char* begin = nullptr;
    const char* end = nullptr;
    if (!value.isString() || !value.getString(&begin, &end)) {
        return {};
    }
    return {begin, std::min(static_cast<std::size_t>(end - begin), kLongest)};
}

std::optional<std::int64_t> NumberIn(const Json::Value& object, const char* name) {
    const Json::Value& value = Member(object, name);
    return value.isInt64() ? std::optional<std::int64_t>(value.asInt64()) : std::nullopt;
}

std::optional<bool> FlagIn(const Json::Value& object, const char* name) {
    const Json::Value& value = Member(object, name);
    return value.isBool() ? std::optional(value.asBool()) : std::nullopt;
}

}  // namespace IpodControl::PlayerView
