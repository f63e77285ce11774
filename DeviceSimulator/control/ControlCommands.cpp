#include "DeviceSimulator/control/ControlCommands.h"

#include <json/json.h>

#include <algorithm>
#include <array>
#include <exception>

#include "DeviceSimulator/control/ControlHandlers.h"
#include "ServiceUtil/JsonText.h"

namespace DeviceSimulator {

namespace {

struct Member {
    std::string_view name{};
    std::string_view meaning{};
};

struct Command {
    std::string_view name;
    std::string_view meaning;
    std::array<Member, 16> members;
    void (*run)(ControlCall&);
};

void Help(ControlCall& call);

constexpr Member kHandle{"handle", "of the player; needed unless one is plugged in, or only one is open"};
constexpr Member kCall{"call", "a function's name, such as eDevMgriPodPlay"};
constexpr Member kAnyCall{"call", "a function's name, or * for every function, each counted by itself"};
constexpr Member kTimes{"times", "so many calls; else for ever; 0 takes it back"};

constexpr std::array kCommands{
    Command{"artwork",
            "what becomes of every track's cover",
            {{{"variant", "as-is (default), none, truncated, not-jpeg, narrow, huge or limit"},
              {"inProgress", "ms from a track's beginning during which its cover is being fetched; 0"}}},
            ControlArtwork},
    Command{"busy",
            "makes the next calls answer that the player is busy (94)",
            {{kAnyCall, kTimes}},
            ControlBusy},
    Command{"calls",
            "answers the calls made, oldest first, and the number of the next one",
            {{{"call", "only of that function"},
              {"since", "only from that number on"},
              {"limit", "the newest so many"}}},
            ControlCalls},
    Command{"clear",
            "forgets the calls; takes fail, busy, delay, artwork and memory back and releases delayed calls",
            {{{"what", "only \"calls\", or only \"scripts\""}}},
            ControlClear},
    Command{"delay",
            "makes the next calls take that long first",
            {{kAnyCall, {"milliseconds", "how long"}, kTimes}},
            ControlDelay},
    Command{"devices", "answers what is plugged in", {}, ControlDevices},
    Command{"event",
            "hands an event to every process",
            {{{"name", "the event's name, such as play-time or DEV_MGR_EVENT_PLAY_TIME"},
              {"words", "1 to 6 numbers, the first the event's; with a name the 0 to 5 behind it"},
              {"texts", "packed one after another"}}},
            ControlEvent},
    Command{"fail",
            "makes the next calls answer a code and do nothing else",
            {{kAnyCall, {"code", "the result code"}, kTimes}},
            ControlFail},
    Command{"help", "lists the commands and their members", {{{"about", "only that command"}}}, Help},
    Command{
        "lock", "locks a player: it cannot be opened, who has it open keeps it", {{kHandle}}, ControlLock},
    Command{"memory",
            "bounds the blocks of shared memory that are granted from then on",
            {{{"largest", "bytes; without it there is no bound"}}},
            ControlMemory},
    Command{"player",
            "a thumb on the player",
            {{{"do", "play, pause, toggle, stop, next, previous, seek, forward, rewind or release"},
              {"to", "for seek: ms from the track's beginning"},
              {"left", "for seek, instead: ms before the track's end"},
              {"shuffle", "off, tracks or albums"},
              {"repeat", "off, one or all"},
              kHandle}},
            ControlPlayer},
    Command{"plug",
            "plugs a device in and answers its handle",
            {{{"type", "iap2 (default), iap, stick, mtp, unknown, hub, no-medium, unsupported or a number"},
              {"handle", "the next free one"},
              {"name", "one that fits the type"},
              {"product", "ID"},
              {"vendor", "ID"},
              {"hub", "the handle of the hub that it hangs on"},
              {"locked", "of a player: true; it cannot be opened until it is unlocked"},
              {"music", "of a player: the folder of its music; else the environment's"},
              {"tracks", "instead: so many made-up tracks"},
              {"sort", "no-article (default: a leading The does not count), article or bytes"},
              {"seed", "of its shuffle; another one each time"},
              {"build", "ms that an iap2 takes to build its database; 1000"},
              {"ids", "of items: positions (default), or stable, which are none"},
              {"page", "most items that one call delivers; any number"},
              {"covers", "stored (default), wanted (made to fit), or length (a height of 0)"},
              {"devices", "several at once, each an object of these members: all or none"}}},
            ControlPlug},
    Command{"queue",
            "answers a page of the now-playing queue, after it has been changed",
            {{{"tracks", "an array of the library's track numbers or titles: the new queue, which plays"},
              {"position", "where in the queue to play, from 0"},
              {"start", "where the page begins; 0"},
              {"count", "the page's length; 20, at most 1000"},
              kHandle}},
            ControlQueue},
    Command{"sound",
            "lets the sound devices vanish, return and falter, and answers how they are",
            {{{"capture", "the player's audio: gone or there"},
              {"playback", "the unit's output: gone or there"},
              {"ppm", "how much too fast the player's clock runs from the next start on; 0"},
              {"refuse", "the rate in Hz that the unit's output refuses from then on; 0: none"},
              {"xrun", "which of them runs over once: capture or playback"}}},
            ControlSound},
    Command{"status",
            "answers the devices with what they play, the processes and what is in force",
            {},
            ControlStatus},
    Command{"unlock", "unlocks a player", {{kHandle}}, ControlUnlock},
    Command{"unplug",
            "unplugs a device; with a hub goes what hangs on it",
            {{{"handle", "needed unless exactly one is plugged in"},
              {"handles", "several at once: all or none"},
              {"all", "true: every one"}}},
            ControlUnplug},
    Command{"wait",
            "answers once a call has begun so often since the last clear",
            {{kCall,
              {"times", "1"},
              {"since", "only calls from that number on, see calls"},
              {"timeout", "5000 ms, at most 600000"}}},
            ControlWait}};

const Command* FindCommand(const std::string& name) {
    const auto* found = std::find_if(kCommands.begin(), kCommands.end(),
                                     [&](const Command& entry) { return entry.name == name; });
    return found == kCommands.end() ? nullptr : found;
}

std::string CommandNames() {
    std::string names;
    for (const Command& entry : kCommands) {
        names.append(names.empty() ? "" : ", ").append(entry.name);
    }
    return names;
}

Json::Value Describe(const Command& command) {
    Json::Value description;
    description["command"] = std::string(command.name);
    description["does"] = std::string(command.meaning);
    description["members"] = Json::objectValue;
    for (const Member& member : command.members) {
        if (!member.name.empty()) {
            description["members"][std::string(member.name)] = std::string(member.meaning);
        }
    }
    return description;
}

void Help(ControlCall& call) {
    const std::string about = call.fields.Text("about", "");
    if (!about.empty() && FindCommand(about) == nullptr) {
        call.fields.Complain("about", "must be one of " + CommandNames());
    }
    call.answer["commands"] = Json::arrayValue;
    for (const Command& command : kCommands) {
        if (about.empty() || command.name == about) {
            call.answer["commands"].append(Describe(command));
        }
    }
}

/// False with what is wrong in `error`.
bool Parse(std::string_view line, Json::Value& command, std::string& error) {
    constexpr int kDeepestNesting = 8;
    auto value = ReadJson(line, kDeepestNesting, &error);
    if (!value || !value->isObject()) {
        error = "not a JSON object: " + error;
        return false;
    }
    command = std::move(*value);
    return true;
}

/// Returns what was wrong.
std::string Run(const Json::Value& object, const std::function<bool()>& isAborted, Json::Value& answer) {
    ControlFields fields(object);
    const Command* command = FindCommand(fields.Text("command", ""));
    if (command == nullptr) {
        return "\"command\" must be one of " + CommandNames();
    }
    std::vector<std::string_view> members{"command"};
    for (const Member& member : command->members) {
        members.push_back(member.name);
    }
    fields.AllowOnly(members);
    ControlCall call{fields, answer, isAborted};
    if (fields.AreGood()) {
        command->run(call);
    }
    return fields.Error();
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
        Json::Value object;
        Json::Value answer(Json::objectValue);
        std::string error;
        if (Parse(line, object, error)) {
            error = Run(object, isAborted, answer);
        }
        return Write(answer, error);
    } catch (const std::exception& error) {
        return Write(Json::objectValue, error.what());
    }
}

}  // namespace DeviceSimulator
