#include "DeviceSimulator/control/ControlFields.h"

#include <algorithm>
#include <cstdlib>

#include "DeviceSimulator/device/DeviceTypes.h"

namespace DeviceSimulator {

void ControlFields::Complain(std::string_view member, std::string_view what) {
    Refuse(std::string("\"").append(member).append("\" ").append(what));
}

void ControlFields::Refuse(std::string_view why) {
    if (m_error.empty()) {
        m_error = why;
    }
}

void ControlFields::AllowOnly(std::span<const std::string_view> members) {
    for (const std::string& member : m_command.getMemberNames()) {
        if (member.empty() || std::find(members.begin(), members.end(), member) == members.end()) {
            Complain(member.substr(0, 64), "is no member of this");
        }
    }
}

std::uint32_t ControlFields::Number(std::string_view member, std::optional<std::uint32_t> otherwise) {
    const Json::Value* value = Find(member);
    if (value == nullptr && otherwise) {
        return *otherwise;
    }
    if (value == nullptr || !value->isUInt()) {
        Complain(member, "must be a number from 0 to 4294967295");
        return 0;
    }
    return value->asUInt();
}

std::optional<std::uint32_t> ControlFields::OptionalNumber(std::string_view member) {
    return Has(member) ? std::optional(Number(member)) : std::nullopt;
}

std::optional<std::int32_t> ControlFields::OptionalSigned(std::string_view member, std::int32_t most) {
    const Json::Value* const value = Find(member);
    if (value == nullptr) {
        return std::nullopt;
    }
    if (!value->isInt() || std::abs(std::int64_t{value->asInt()}) > most) {
        Complain(member,
                 "must be a whole number from -" + std::to_string(most) + " to " + std::to_string(most));
        return std::nullopt;
    }
    return value->asInt();
}

std::string ControlFields::Text(std::string_view member, std::optional<std::string> otherwise) {
    const Json::Value* value = Find(member);
    if (value == nullptr && otherwise) {
        return *otherwise;
    }
    if (value == nullptr || !value->isString()) {
        Complain(member, "must be a text");
        return {};
    }
    return value->asString();
}

bool ControlFields::Flag(std::string_view member, bool otherwise) {
    const Json::Value* value = Find(member);
    if (value == nullptr) {
        return otherwise;
    }
    if (!value->isBool()) {
        Complain(member, "must be true or false");
        return otherwise;
    }
    return value->asBool();
}

std::optional<std::size_t> ControlFields::Word(std::string_view member,
                                               std::span<const std::string_view> words) {
    const Json::Value* value = Find(member);
    if (value == nullptr) {
        return std::nullopt;
    }
    const auto found = std::find(words.begin(), words.end(), value->isString() ? value->asString() : "");
    if (found == words.end()) {
        std::string what = "must be one of ";
        for (const std::string_view word : words) {
            what.append(word == words.front() ? "" : ", ").append(word);
        }
        Complain(member, what);
        return std::nullopt;
    }
    return static_cast<std::size_t>(found - words.begin());
}

std::vector<std::uint32_t> ControlFields::Numbers(std::string_view member) {
    std::vector<std::uint32_t> numbers;
    for (const Json::Value& item : Elements(
             member, [](const Json::Value& value) { return value.isUInt(); },
             "must be an array of numbers from 0 to 4294967295")) {
        numbers.push_back(item.asUInt());
    }
    return numbers;
}

std::vector<std::string> ControlFields::Texts(std::string_view member) {
    std::vector<std::string> texts;
    for (const Json::Value& item : Elements(
             member, [](const Json::Value& value) { return value.isString(); },
             "must be an array of texts")) {
        texts.push_back(item.asString());
    }
    return texts;
}

std::vector<Json::Value> ControlFields::Objects(std::string_view member) {
    return Elements(
        member, [](const Json::Value& value) { return value.isObject(); }, "must be an array of objects");
}

std::vector<Json::Value> ControlFields::Items(std::string_view member) {
    return Elements(
        member, [](const Json::Value& value) { return value.isUInt() || value.isString(); },
        "must be an array of numbers and titles");
}

FunctionId ControlFields::Function(std::string_view member) {
    const auto function = FindFunction(Text(member));
    if (!function) {
        Complain(member, "must name a function of the device manager");
    }
    return function.value_or(FunctionId{});
}

std::vector<FunctionId> ControlFields::Functions(std::string_view member) {
    if (!Has(member) || Text(member) != "*") {
        return {Function(member)};
    }
    std::vector<FunctionId> all;
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        all.push_back(static_cast<FunctionId>(i));
    }
    return all;
}

std::uint32_t ControlFields::Type(std::string_view member, std::uint32_t otherwise) {
    const Json::Value* value = Find(member);
    if (value == nullptr) {
        return otherwise;
    }
    if (value->isUInt()) {
        return value->asUInt();
    }
    const auto type = FindDeviceType(value->isString() ? value->asString() : std::string{});
    if (!type) {
        Complain(member, "must be a device type's number, or its word, such as \"iap2\" or \"stick\"");
    }
    return type.value_or(otherwise);
}

std::vector<Json::Value> ControlFields::Elements(std::string_view member, bool (*isGood)(const Json::Value&),
                                                 std::string_view what) {
    const Json::Value* value = Find(member);
    if (value == nullptr) {
        return {};
    }
    if (!value->isArray() || !std::all_of(value->begin(), value->end(), isGood)) {
        Complain(member, what);
        return {};
    }
    return {value->begin(), value->end()};
}

const Json::Value* ControlFields::Find(std::string_view member) const {
    return m_command.find(member.data(), member.data() + member.size());
}

}  // namespace DeviceSimulator
