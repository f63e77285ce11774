#include "IpodControl/player/Fields.h"

#include <algorithm>

namespace IpodControl::PlayerView {

std::string TextIn(const Json::Value& object, const char* name) {
    constexpr std::size_t kLongest = 1024;
    const Json::Value& value = Field(object, name);
    const char* begin = nullptr;
    const char* end = nullptr;
    if (!value.isString() || !value.getString(&begin, &end)) {
        return {};
    }
    return {begin, std::min(static_cast<std::size_t>(end - begin), kLongest)};
}

std::optional<bool> FlagIn(const Json::Value& object, const char* name) {
    const Json::Value& value = Field(object, name);
    return value.isBool() ? std::optional(value.asBool()) : std::nullopt;
}

}  // namespace IpodControl::PlayerView
