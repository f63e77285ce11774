// What a step of a scenario asks of an answer: "trackInfo.trackIndex=3".
#pragma once

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

namespace ScenarioRunner {

enum class Operator { Equal, Unequal, Less, LessOrEqual, Greater, GreaterOrEqual, Contains };

struct Condition {
    std::string path;  ///< "trackInfo.trackIndex", "devices[0].name", "tracks.length"; empty: the whole
    Operator compare = Operator::Equal;
    Json::Value value;
};

/// Null when there is nothing at `path`. A list's and a text's "length" is the number of its elements and
/// bytes.
const Json::Value* Find(const Json::Value& whole, std::string_view path, Json::Value& length);

/// Numbers are compared by value, texts by byte; "contains" asks a text for a part and a list for an element.
bool Holds(const Condition& condition, const Json::Value& whole);
bool AllHold(const std::vector<Condition>& conditions, const Json::Value& whole);

/// As it is written in a scenario.
std::string ToText(const Condition& condition);

}  // namespace ScenarioRunner
