#include "ScenarioRunner/Condition.h"

#include <algorithm>
#include <array>

#include "IpodControl/Message.h"

namespace ScenarioRunner {

namespace {

/// By Operator.
constexpr auto kSigns = std::to_array<std::string_view>({"=", "!=", "<", "<=", ">", ">=", "~"});

/// A list's element by the text of its number.
const Json::Value* Element(const Json::Value& list, std::string_view number) {
    Json::ArrayIndex index = 0;
    if (!list.isArray() || number.empty()) {
        return nullptr;
    }
    for (const char digit : number) {
        index = index * 10 + static_cast<Json::ArrayIndex>(digit - '0');
        if (digit < '0' || digit > '9' || index >= list.size()) {
            return nullptr;
        }
    }
    return &list[index];
}

const Json::Value* Step(const Json::Value& value, std::string_view part, Json::Value& length) {
    if (part.size() > 1 && part.front() == '[') {
        return Element(value, part.substr(1, part.find(']') - 1));
    }
    if (part == "length" && (value.isArray() || value.isString())) {
        length = Json::UInt64{value.isArray() ? value.size() : value.asString().size()};
        return &length;
    }
    return value.isObject() ? value.find(part.data(), part.data() + part.size()) : nullptr;
}

/// Cuts the first of "a", ".a" and "[1]" off.
std::string_view TakePart(std::string_view& path) {
    path.remove_prefix(path.front() == '.' ? 1 : 0);
    const std::size_t end = std::min(path.find_first_of(".[", 1), path.size());
    const std::string_view part = path.substr(0, end);
    path.remove_prefix(end);
    return part;
}

/// Below 0, 0 or above; 2 where they cannot be compared.
int Compare(const Json::Value& a, const Json::Value& b) {
    if (a.isNumeric() && b.isNumeric()) {
        const double left = a.asDouble();
        const double right = b.asDouble();
        return left < right ? -1 : (left > right ? 1 : 0);
    }
    if (a.isString() && b.isString()) {
        const int order = a.asString().compare(b.asString());
        return order < 0 ? -1 : (order > 0 ? 1 : 0);
    }
    return a == b ? 0 : 2;
}

bool Contains(const Json::Value& whole, const Json::Value& part) {
    if (whole.isString() && part.isString()) {
        return whole.asString().find(part.asString()) != std::string::npos;
    }
    return whole.isArray() && std::any_of(whole.begin(), whole.end(), [&](const Json::Value& element) {
               return Compare(element, part) == 0;
           });
}

}  // namespace

const Json::Value* Find(const Json::Value& whole, std::string_view path, Json::Value& length) {
    const Json::Value* value = &whole;
    while (value != nullptr && !path.empty()) {
        value = Step(*value, TakePart(path), length);
    }
    return value;
}

bool Holds(const Condition& condition, const Json::Value& whole) {
    Json::Value length;
    const Json::Value* value = Find(whole, condition.path, length);
    if (value == nullptr) {
        return condition.compare == Operator::Unequal;
    }
    const int order = Compare(*value, condition.value);
    switch (condition.compare) {
        case Operator::Equal:
            return order == 0;
        case Operator::Unequal:
            return order != 0;
        case Operator::Less:
            return order == -1;
        case Operator::LessOrEqual:
            return order == -1 || order == 0;
        case Operator::Greater:
            return order == 1;
        case Operator::GreaterOrEqual:
            return order == 1 || order == 0;
        case Operator::Contains:
            break;
    }
    return Contains(*value, condition.value);
}

bool AllHold(const std::vector<Condition>& conditions, const Json::Value& whole) {
    return std::all_of(conditions.begin(), conditions.end(),
                       [&](const Condition& condition) { return Holds(condition, whole); });
}

std::string ToText(const Condition& condition) {
    const std::string value = IpodControl::ToLine(condition.value);
    if (condition.path.empty()) {
        return value;
    }
    return condition.path + std::string(kSigns[static_cast<std::size_t>(condition.compare)]) + value;
}

}  // namespace ScenarioRunner
