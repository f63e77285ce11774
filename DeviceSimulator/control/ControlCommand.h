// A command of the control socket: its name, what its members may be, and what it does.
#pragma once

#include <json/json.h>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/wire/FunctionId.h"

namespace DeviceSimulator {

/// What is wrong with a member's value, such as "must be a text"; empty when nothing is. A member that is
/// absent is null.
using MemberCheck = std::string (*)(const Json::Value& value);

struct Member {
    const char* name = "";
    const char* meaning = "";
    MemberCheck check = nullptr;
    bool isNeeded = false;
};

struct ControlCall {
    const Json::Value& command;              ///< its members have passed their checks; null where absent
    Json::Value& answer;                     ///< takes what there is to say
    const std::function<bool()>& isAborted;  ///< whoever waits asks it every 100 ms
};

struct ControlCommand {
    std::string_view name;
    std::string_view meaning;
    std::array<Member, 17> members;  ///< in the order of their checks; those without a name are none
    /// Returns what is wrong; empty when nothing is. What `answer` has been told then does not count.
    std::string (*run)(ControlCall& call);
};

std::span<const ControlCommand> DeviceCommands();
std::span<const ControlCommand> PlaybackCommands();
std::span<const ControlCommand> ScriptCommands();
std::span<const ControlCommand> StatusCommands();

// ControlMembers.cpp

/// The first thing that is wrong with the members of `object`; empty when nothing is.
std::string WhatIsWrong(const Json::Value& object, std::span<const Member> members);
/// Of a member: its name in quotes, then `what`.
std::string Complaint(std::string_view member, std::string_view what);

std::string MustBeNumber(const Json::Value& value);
std::string MustBeText(const Json::Value& value);
std::string MustBeFlag(const Json::Value& value);
std::string MustBeNumbers(const Json::Value& value);
std::string MustBeTexts(const Json::Value& value);
std::string MustBeObjects(const Json::Value& value);
/// Tracks of a library by their numbers or titles.
std::string MustBeTracks(const Json::Value& value);
/// A device type's word or number.
std::string MustBeType(const Json::Value& value);
/// A device-manager function by its name.
std::string MustNameFunction(const Json::Value& value);
/// The same, or "*" for every function.
std::string MustNameFunctions(const Json::Value& value);
std::string MustBeOneOf(const Json::Value& value, std::span<const std::string_view> words);

template <std::uint32_t most>
std::string MustBeAtMost(const Json::Value& value) {
    const std::string wrong = MustBeNumber(value);
    return wrong.empty() && value.asUInt() > most ? "is at most " + std::to_string(most) : wrong;
}

template <const auto& words>
std::string MustBeWord(const Json::Value& value) {
    return MustBeOneOf(value, words);
}

/// Which of `words` a member is; none when it is absent.
std::optional<std::size_t> PlaceOf(const Json::Value& value, std::span<const std::string_view> words);
std::optional<std::uint32_t> OptionalNumber(const Json::Value& value);
std::vector<FunctionId> FunctionsOf(const Json::Value& value);
std::vector<std::uint32_t> NumbersOf(const Json::Value& value);

// What several commands need.

inline constexpr Member kHandle{
    "handle", "of the player; needed unless one is plugged in, or only one is open", MustBeNumber};
inline constexpr auto kArtworkWords = std::to_array<std::string_view>(
    {"as-is", "none", "truncated", "not-jpeg", "narrow", "huge", "limit"});  // of ArtworkVariant
inline constexpr auto kShuffleWords = std::to_array<std::string_view>({"off", "tracks", "albums"});
inline constexpr auto kRepeatWords = std::to_array<std::string_view>({"off", "one", "all"});

/// What `work`(model, now) returns, under the model's lock.
template <typename Work>
auto Locked(Work work) {
    return Engine::Instance().Loop().Locked(std::move(work));
}

/// The player with that handle; for 0 the only one there is, or else the only one that a process has opened.
/// Null, with the reason in `error`, when that is none. Under the model's lock.
Device* ChoosePlayer(const ManagerModel& model, std::uint32_t handle, std::string& error);
/// A track of the library, by its number in it.
Json::Value DescribeTrack(const Library& library, std::uint32_t track);

}  // namespace DeviceSimulator
