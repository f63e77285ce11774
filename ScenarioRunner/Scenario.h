// A scenario: the steps of a file, as they are to be taken.
#pragma once

#include <json/json.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "ScenarioRunner/Condition.h"

namespace ScenarioRunner {

/// A command of the control channel.
struct Command {
    Json::Value object;
    std::size_t column = 1;
    std::vector<std::pair<std::string, std::size_t>> members;  ///< with their columns
};

/// A call of the user interface.
struct Request {
    std::string method;
    Json::Value params;  ///< null: none
};

/// What an expectation looks at.
enum class Subject { Result, Error, Answer };

struct ExpectReply {
    Subject subject = Subject::Result;
    std::vector<Condition> conditions;
};

/// Repeats the last request, or command for Subject::Answer, until the conditions hold.
struct Until {
    ExpectReply reply;
    std::chrono::milliseconds within{};
};

/// A notification, or a call that the service makes.
struct ExpectEvent {
    bool isCall = false;
    bool isUnwanted = false;
    std::string name;
    std::vector<Condition> conditions;  ///< of a notification's params, of a call's record
    std::chrono::milliseconds time{};   ///< within which it comes, or for which it stays away
};

struct Sleep {
    std::chrono::milliseconds time{};
};

struct Heading {
    bool isTitle = false;
    std::string text;
};

struct Step;

struct Repeat {
    std::size_t times = 0;
    std::vector<Step> steps;
};

struct Step {
    std::size_t line = 0;
    std::string text;  ///< the line without its blanks at both ends
    std::variant<Heading, Command, Request, ExpectReply, Until, ExpectEvent, Sleep, Repeat> action;
    /// The next step looks at an error, so an error is no failure of this one.
    bool mayFail = false;
};

struct Scenario {
    std::string file;
    std::vector<Step> steps;
};

/// Something wrong in a file.
struct Fault {
    std::size_t line = 0;
    std::size_t column = 0;  ///< both from 1
    std::string text;
};

}  // namespace ScenarioRunner
