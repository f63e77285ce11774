#include "DeviceSimulator/ControlFields.h"

#include <algorithm>

#include "DeviceSimulator/Environment.h"

namespace DeviceSimulator {

void ControlFields::Complain(std::string_view member, std::string_view what) {
    if (m_error.empty()) {
        m_error.append("\"").append(member).append("\" ").append(what);
    }
}

void ControlFields::AllowOnly(std::span<const std::string_view> members) {
    for (const std::string& member : m_command.getMemberNames()) {
        if (member != "command" && std::find(members.begin(), members.end(), member) == members.end()) {
            Complain(member.substr(0, 64), "is no member of this command");
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

std::vector<std::uint32_t> ControlFields::Numbers(std::string_view member) {
    const Json::Value* value = Find(member);
    const bool isGood =
        value != nullptr && value->isArray() &&
        std::all_of(value->begin(), value->end(), [](const auto& item) { return item.isUInt(); });
    if (!isGood) {
        Complain(member, "must be an array of numbers from 0 to 4294967295");
        return {};
    }
    std::vector<std::uint32_t> numbers;
    for (const Json::Value& item : *value) {
        numbers.push_back(item.asUInt());
    }
    return numbers;
}

std::vector<std::string> ControlFields::Texts(std::string_view member) {
    const Json::Value* value = Find(member);
    if (value == nullptr) {
        return {};
    }
    const bool isGood = value->isArray() && std::all_of(value->begin(), value->end(),
                                                        [](const auto& item) { return item.isString(); });
    if (!isGood) {
        Complain(member, "must be an array of texts");
        return {};
    }
    std::vector<std::string> texts;
    for (const Json::Value& item : *value) {
        texts.push_back(item.asString());
    }
    return texts;
}

FunctionId ControlFields::Function(std::string_view member) {
    const auto function = FindFunction(Text(member));
    if (!function) {
        Complain(member, "must name a function of the device manager");
    }
    return function.value_or(FunctionId{});
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

const Json::Value* ControlFields::Find(std::string_view member) const {
    return m_command.find(member.data(), member.data() + member.size());
}

}  // namespace DeviceSimulator
