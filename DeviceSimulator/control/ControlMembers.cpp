// What the members of a command may be.
#include <algorithm>

#include "DeviceSimulator/control/ControlCommand.h"
#include "DeviceSimulator/device/DeviceTypes.h"

namespace DeviceSimulator {

namespace {

/// Of a name in a message.
constexpr std::size_t kLongestQuote = 64;

bool IsArrayOf(const Json::Value& value, bool (*isGood)(const Json::Value&)) {
    return value.isArray() && std::all_of(value.begin(), value.end(), isGood);
}

std::string Unless(bool isGood, const char* what) {
    return isGood ? "" : what;
}

}  // namespace

std::string Complaint(std::string_view member, std::string_view what) {
    return std::string("\"").append(member).append("\" ").append(what);
}

std::string WhatIsWrong(const Json::Value& object, std::span<const Member> members) {
    for (const std::string& name : object.getMemberNames()) {
        const auto isMeant = [&](const Member& member) { return member.name == name; };
        if (name.empty() || std::none_of(members.begin(), members.end(), isMeant)) {
            return Complaint(name.substr(0, kLongestQuote), "is no member of this");
        }
    }
    for (const Member& member : members) {
        if (member.isNeeded || object.isMember(member.name)) {
            const std::string wrong = member.check(object[member.name]);
            if (!wrong.empty()) {
                return Complaint(member.name, wrong);
            }
        }
    }
    return {};
}

std::string MustBeNumber(const Json::Value& value) {
    return Unless(value.isUInt(), "must be a number from 0 to 4294967295");
}

std::string MustBeText(const Json::Value& value) {
    return Unless(value.isString(), "must be a text");
}

std::string MustBeFlag(const Json::Value& value) {
    return Unless(value.isBool(), "must be true or false");
}

std::string MustBeNumbers(const Json::Value& value) {
    return Unless(IsArrayOf(value, [](const Json::Value& item) { return item.isUInt(); }),
                  "must be an array of numbers from 0 to 4294967295");
}

std::string MustBeTexts(const Json::Value& value) {
    return Unless(IsArrayOf(value, [](const Json::Value& item) { return item.isString(); }),
                  "must be an array of texts");
}

std::string MustBeObjects(const Json::Value& value) {
    return Unless(IsArrayOf(value, [](const Json::Value& item) { return item.isObject(); }),
                  "must be an array of objects");
}

std::string MustBeTracks(const Json::Value& value) {
    return Unless(IsArrayOf(value, [](const Json::Value& item) { return item.isUInt() || item.isString(); }),
                  "must be an array of numbers and titles");
}

std::string MustBeType(const Json::Value& value) {
    return Unless(value.isUInt() || (value.isString() && FindDeviceType(value.asString())),
                  "must be a device type's number, or its word, such as \"iap2\" or \"stick\"");
}

std::string MustNameFunction(const Json::Value& value) {
    return value.isString() ? Unless(FindFunction(value.asString()).has_value(),
                                     "must name a function of the device manager")
                            : MustBeText(value);
}

std::string MustNameFunctions(const Json::Value& value) {
    return value == "*" ? "" : MustNameFunction(value);
}

std::string MustBeOneOf(const Json::Value& value, std::span<const std::string_view> words) {
    if (value.isString() && PlaceOf(value, words)) {
        return {};
    }
    std::string what = "must be one of ";
    for (const std::string_view word : words) {
        what.append(word == words.front() ? "" : ", ").append(word);
    }
    return what;
}

std::optional<std::size_t> PlaceOf(const Json::Value& value, std::span<const std::string_view> words) {
    const auto found = std::find(words.begin(), words.end(), value.asString());
    return found != words.end() ? std::optional(static_cast<std::size_t>(found - words.begin()))
                                : std::nullopt;
}

std::optional<std::uint32_t> OptionalNumber(const Json::Value& value) {
    return value.isNull() ? std::nullopt : std::optional(value.asUInt());
}

std::vector<std::uint32_t> NumbersOf(const Json::Value& value) {
    std::vector<std::uint32_t> numbers;
    for (const Json::Value& item : value) {
        numbers.push_back(item.asUInt());
    }
    return numbers;
}

std::vector<FunctionId> FunctionsOf(const Json::Value& value) {
    std::vector<FunctionId> functions;
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        if (value == "*" || value == std::string(kFunctionNames[i])) {
            functions.push_back(static_cast<FunctionId>(i));
        }
    }
    return functions;
}

}  // namespace DeviceSimulator
