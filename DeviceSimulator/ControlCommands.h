// The commands of the control socket: what Simulator does for a test in the same process, for one outside.
//
// A command is one JSON object on one line; so is its answer, with "ok" true, or with "ok" false and what was
// wrong in "error". Members that a command does not know are an error.
//
//   {"command":"plug"}                   plugs a device in; answers its "handle"
//       "type"      "iap2" (default), "iap", "stick", "mtp", "unknown", "hub", "no-medium", "unsupported", or
//                   the type's number
//       "handle"    the next free one
//       "name"      one that fits the type
//       "product", "vendor"
//   {"command":"unplug"}
//       "handle"    may be left out when one device is plugged in
//   {"command":"devices"}                answers the "devices" that are plugged in
//   {"command":"fail","call":"eDevMgriPodPlay","code":94}
//       "times"     for ever
//   {"command":"delay","call":"eDevMgriPodPlay","milliseconds":500}
//       "times"     for ever
//   {"command":"event","words":[8,61000]}
//       "texts"     none; packed one after another
//   {"command":"artwork"}                what becomes of every track's cover
//       "variant"   "as-is" (default), "none", "truncated", "not-jpeg", "narrow", "huge", "limit"
//       "inProgress" 0; milliseconds from a track's beginning during which its cover is being fetched
//   {"command":"calls"}                  answers the "calls" that were made, oldest first
//       "call"      all functions
//   {"command":"wait","call":"eDevMgriPodPlay"}   answers once the call has begun, since the last clear
//       "times"     1
//       "timeout"   5000 (milliseconds, at most 600000)
//   {"command":"clear"}                  forgets the calls and takes fail, delay and artwork back
//       "what"      only "calls", or only "scripts"
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace DeviceSimulator {

/// The answer to one line, without a line end. Blocks while a "wait" lasts, until `isAborted`(), which is
/// asked every 100 ms. Any thread may call it.
std::string AnswerControlLine(std::string_view line, const std::function<bool()>& isAborted);

}  // namespace DeviceSimulator
