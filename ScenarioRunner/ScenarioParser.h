// Reads scenario files. docs/simulator.md has their format.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ScenarioRunner/Scenario.h"

namespace ScenarioRunner {

/// The steps of a file's `text`; where `faults` come out, they are not to be taken. Any text will do.
Scenario ParseScenario(std::string file, std::string_view text, std::vector<Fault>& faults);

/// What the control channel does not know: commands and members that are not among those of its "help".
std::vector<Fault> CheckCommands(const std::vector<Step>& steps, const Json::Value& help);

/// A command of the control channel from the words of a command line: one of JSON, or a name and name=value.
/// Says in `error` what is wrong.
Json::Value ParseCommandWords(const std::vector<std::string>& words, std::string& error);

}  // namespace ScenarioRunner
