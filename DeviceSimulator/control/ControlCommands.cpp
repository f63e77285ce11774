#include "DeviceSimulator/control/ControlCommands.h"

#include <algorithm>
#include <exception>

#include "DeviceSimulator/control/ControlCommand.h"
#include "ServiceUtil/JsonText.h"

namespace DeviceSimulator {

namespace {

std::string Help(ControlCall& call);

constexpr ControlCommand kHelp{
    "help", "lists the commands and their members", {{{"about", "only that command", MustBeText}}}, Help};

/// By name.
const std::vector<ControlCommand>& Commands() {
    static const auto* const kCommands = [] {
        auto* const commands = new std::vector<ControlCommand>{kHelp};
        for (const auto& some : {DeviceCommands(), PlaybackCommands(), ScriptCommands(), StatusCommands()}) {
            commands->insert(commands->end(), some.begin(), some.end());
        }
        std::sort(commands->begin(), commands->end(),
                  [](const auto& a, const auto& b) { return a.name < b.name; });
        return commands;
    }();
    return *kCommands;
}

const ControlCommand* FindCommand(const std::string& name) {
    const auto& commands = Commands();
    const auto found =
        std::find_if(commands.begin(), commands.end(), [&](const auto& entry) { return entry.name == name; });
    return found == commands.end() ? nullptr : &*found;
}

std::string CommandNames() {
    std::string names;
    for (const ControlCommand& command : Commands()) {
        names.append(names.empty() ? "" : ", ").append(command.name);
    }
    return names;
}

Json::Value Describe(const ControlCommand& command) {
    Json::Value description;
    description["command"] = std::string(command.name);
    description["does"] = std::string(command.meaning);
    description["members"] = Json::objectValue;
    for (const Member& member : command.members) {
        if (member.check != nullptr) {
            description["members"][member.name] = member.meaning;
        }
    }
    return description;
}

std::string Help(ControlCall& call) {
    const std::string about = call.command["about"].asString();
    if (!about.empty() && FindCommand(about) == nullptr) {
        return Complaint("about", "must be one of " + CommandNames());
    }
    call.answer["commands"] = Json::arrayValue;
    for (const ControlCommand& command : Commands()) {
        if (about.empty() || command.name == about) {
            call.answer["commands"].append(Describe(command));
        }
    }
    return {};
}

/// Returns what was wrong.
std::string Run(std::string_view line, const std::function<bool()>& isAborted, Json::Value& answer) {
    constexpr int kDeepestNesting = 8;
    std::string error;
    auto object = ReadJson(line, kDeepestNesting, &error);
    if (!object || !object->isObject()) {
        return "not a JSON object: " + error;
    }
    Json::Value name;
    object->removeMember("command", &name);
    const ControlCommand* const command = name.isString() ? FindCommand(name.asString()) : nullptr;
    if (command == nullptr) {
        return Complaint("command", "must be one of " + CommandNames());
    }
    ControlCall call{*object, answer, isAborted};
    error = WhatIsWrong(*object, command->members);
    return error.empty() ? command->run(call) : error;
}

std::string Write(Json::Value answer, const std::string& error) {
    if (!error.empty()) {
        answer = Json::objectValue;
        answer["error"] = error;
    }
    answer["ok"] = error.empty();
    return WriteJson(answer);
}

}  // namespace

std::string AnswerControlLine(std::string_view line, const std::function<bool()>& isAborted) {
    try {
        Json::Value answer(Json::objectValue);
        const std::string error = Run(line, isAborted, answer);
        return Write(std::move(answer), error);
    } catch (const std::exception& error) {
        return Write(Json::objectValue, error.what());
    }
}

}  // namespace DeviceSimulator
