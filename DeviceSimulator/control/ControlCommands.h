// The commands of the control socket: what Simulator does for a test in the same process, for one outside.
//
// A command is one JSON object on one line; so is its answer, with "ok" true, or with "ok" false and what was
// wrong in "error". Members that a command does not know are an error. {"command":"help"} lists them all.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace DeviceSimulator {

/// The answer to one line, without a line end. Blocks while a "wait" lasts, until `isAborted`(), which is
/// asked every 100 ms. Any thread may call it.
std::string AnswerControlLine(std::string_view line, const std::function<bool()>& isAborted);

}  // namespace DeviceSimulator
