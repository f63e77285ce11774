// The control commands, one function each; ControlCommands.cpp has the table of them.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <functional>
#include <optional>

#include "DeviceSimulator/control/ControlFields.h"
#include "DeviceSimulator/device/Device.h"
#include "DeviceSimulator/device/ManagerModel.h"

namespace DeviceSimulator {

/// A handler reads all `fields`, does its work unless one of them is wrong, and adds what it has to say to
/// `answer`. What is wrong goes to `fields`.
struct ControlCall {
    ControlFields& fields;
    Json::Value& answer;
    const std::function<bool()>& isAborted;  ///< whoever waits asks it every 100 ms
};

// ControlDevices.cpp
void ControlPlug(ControlCall& call);
void ControlUnplug(ControlCall& call);
void ControlDevices(ControlCall& call);
void ControlLock(ControlCall& call);
void ControlUnlock(ControlCall& call);
void ControlSound(ControlCall& call);

// ControlScripts.cpp
void ControlFail(ControlCall& call);
void ControlBusy(ControlCall& call);
void ControlDelay(ControlCall& call);
void ControlArtwork(ControlCall& call);
void ControlMemory(ControlCall& call);
void ControlEvent(ControlCall& call);
void ControlCalls(ControlCall& call);
void ControlWait(ControlCall& call);
void ControlClear(ControlCall& call);

// ControlPlayback.cpp
void ControlPlayer(ControlCall& call);
void ControlQueue(ControlCall& call);

// ControlStatus.cpp
void ControlStatus(ControlCall& call);

// What several of them need.

/// The player with that handle; for 0 the only one there is, or else the only one that a process has opened.
/// Null, with the reason in `error`, when that is none. Under the model's lock.
Device* ChoosePlayer(const ManagerModel& model, std::uint32_t handle, std::string& error);
Json::Value DescribeDevice(const Device& device);
/// The sound devices as a command answers them; null without a simulated sound card.
Json::Value DescribeSound();
/// A track of the library, by its number in it.
Json::Value DescribeTrack(const Library& library, std::uint32_t track);

inline constexpr std::string_view kShuffleWords[] = {"off", "tracks", "albums"};
inline constexpr std::string_view kRepeatWords[] = {"off", "one", "all"};

}  // namespace DeviceSimulator
