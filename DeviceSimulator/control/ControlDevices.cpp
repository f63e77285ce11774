// Control commands: devices that come and go, that are locked and unlocked.
#include <algorithm>

#include "DeviceSimulator/control/ControlCommand.h"

namespace DeviceSimulator {

namespace {

constexpr auto kSortWords = std::to_array<std::string_view>({"no-article", "article", "bytes"});
constexpr auto kIdWords = std::to_array<std::string_view>({"positions", "stable"});
constexpr auto kCoverWords = std::to_array<std::string_view>({"stored", "wanted", "length"});

std::string MustBeNewHandle(const Json::Value& value) {
    const std::string wrong = MustBeNumber(value);
    return wrong.empty() && value.asUInt() == 0 ? "must not be 0" : wrong;
}

std::string MustBeLocale(const Json::Value& value) {
    return value.isString() && IsLocale(value.asString()) ? ""
                                                          : "must be a locale that is known, as sv or de-AT";
}

constexpr std::array<Member, 17> kPlugMembers{
    {{"type", "iap2 (default), iap, stick, mtp, unknown, hub, no-medium, unsupported or a number",
      MustBeType},
     {"handle", "the next free one", MustBeNewHandle},
     {"name", "one that fits the type", MustBeText},
     {"product", "ID", MustBeNumber},
     {"vendor", "ID", MustBeNumber},
     {"hub", "the handle of the hub that it hangs on", MustBeNumber},
     {"locked", "of a player: true; it cannot be opened until it is unlocked", MustBeFlag},
     {"music", "of a player: the folder of its music; else the environment's", MustBeText},
     {"tracks", "instead: so many made-up tracks", MustBeAtMost<kMostSyntheticTracks>},
     {"sort", "no-article (default: a leading The does not count), article or bytes", MustBeWord<kSortWords>},
     {"locale", "whose alphabet it sorts by, as sv or de-AT; not with bytes", MustBeLocale},
     {"seed", "of its shuffle; another one each time", MustBeNumber},
     {"build", "ms that an iap2 takes to build its database; 1000", MustBeNumber},
     {"ids", "of items: positions (default), or stable, which are none", MustBeWord<kIdWords>},
     {"page", "most items that one call delivers; any number", MustBeNumber},
     {"covers", "stored (default), wanted (made to fit), or length (a height of 0)", MustBeWord<kCoverWords>},
     {"devices", "several at once, each an object of these members: all or none", MustBeObjects}}};
/// All but "devices".
constexpr auto kDeviceMembers = std::span(kPlugMembers).first<kPlugMembers.size() - 1>();

/// The value of the word's place; the first when the member is absent.
template <typename Value>
Value ValueOf(const Json::Value& value, std::span<const std::string_view> words) {
    return static_cast<Value>(PlaceOf(value, words).value_or(0));
}

/// `members` are those of kDeviceMembers.
DeviceDescription ReadDescription(const Json::Value& members) {
    DeviceDescription device;
    const Json::Value& type = members["type"];
    device.type = type.isUInt() ? type.asUInt() : FindDeviceType(type.asString()).value_or(device.type);
    device.handle = OptionalNumber(members["handle"]);
    device.name = members["name"].asString();
    device.productId = OptionalNumber(members["product"]);
    device.vendorId = OptionalNumber(members["vendor"]);
    device.hub = members["hub"].asUInt();
    device.isLocked = members["locked"].asBool();
    Character& character = device.character;
    character.music.folder = members["music"].asString();
    character.music.tracks = OptionalNumber(members["tracks"]);
    character.music.sorting = {ValueOf<SortRule>(members["sort"], kSortWords), members["locale"].asString()};
    character.seed = OptionalNumber(members["seed"]);
    if (const auto build = OptionalNumber(members["build"])) {
        character.databaseBuildTime = std::chrono::milliseconds(*build);
    }
    character.ids = ValueOf<ItemIds>(members["ids"], kIdWords);
    character.pageLimit = members["page"].asUInt();
    character.covers = ValueOf<CoverSize>(members["covers"], kCoverWords);
    return device;
}

/// One device from the command's own members, or those of "devices". Returns what is wrong.
std::string ReadDescriptions(const Json::Value& command, std::vector<DeviceDescription>& descriptions) {
    for (const Member& member : kDeviceMembers) {
        if (command.isMember("devices") && command.isMember(member.name)) {
            return Complaint(member.name, "stands in \"devices\"");
        }
    }
    const auto add = [&](const Json::Value& members) -> std::string {
        descriptions.push_back(ReadDescription(members));
        if (members.isMember("locale") && members["sort"] == "bytes") {
            return "\"locale\" has no say in what is sorted by bytes";
        }
        const bool isTwice = members.isMember("tracks") && !members["music"].asString().empty();
        return isTwice ? "only one of \"music\" and \"tracks\" can say what it holds" : "";
    };
    if (!command.isMember("devices")) {
        return add(command);
    }
    for (const Json::Value& object : command["devices"]) {
        const std::string number = std::to_string(descriptions.size());
        const std::string wrong = WhatIsWrong(object, kDeviceMembers);
        if (const std::string error = wrong.empty() ? add(object) : wrong; !error.empty()) {
            return "\"devices\"[" + number + "]: " + error;
        }
    }
    return {};
}

std::string Plug(ControlCall& call) {
    std::vector<DeviceDescription> descriptions;
    std::string error = ReadDescriptions(call.command, descriptions);
    if (!error.empty()) {
        return error;
    }
    for (const DeviceDescription& device : descriptions) {
        if (IsPlayer(device.type)) {
            Engine::Instance().Music(device.character.music);
        }
    }
    const auto handles =
        Locked([&](ManagerModel& model, TimePoint) { return model.PlugAll(descriptions, error); });
    if (!call.command.isMember("devices") && error.empty()) {
        call.answer["handle"] = handles.front();
        return {};
    }
    call.answer["handles"] = Json::arrayValue;
    for (const std::uint32_t handle : handles) {
        call.answer["handles"].append(handle);
    }
    return error;
}

std::string Unplug(ControlCall& call) {
    const Json::Value& command = call.command;
    if (command.isMember("handle") + command.isMember("handles") + command.isMember("all") > 1) {
        return "only one of \"handle\", \"handles\" and \"all\" can say which";
    }
    return Locked([&](ManagerModel& model, TimePoint) -> std::string {
        std::vector<std::uint32_t> handles = NumbersOf(command["handles"]);
        if (command.isMember("handle")) {
            handles.push_back(command["handle"].asUInt());
        } else if (!command.isMember("handles")) {
            for (const auto& device : model.Devices()) {
                handles.push_back(device->identity.handle);
            }
            if (!command["all"].asBool() && handles.size() != 1) {
                return "\"handle\" must say which: " + std::to_string(handles.size()) +
                       " devices are plugged in";
            }
        }
        for (const std::uint32_t handle : handles) {
            if (model.Find(handle) == nullptr) {
                return "no device has handle " + std::to_string(handle);
            }
        }
        std::for_each(handles.begin(), handles.end(), [&](auto handle) { model.Unplug(handle); });
        return {};
    });
}

std::string SetLocked(ControlCall& call, bool isLocked) {
    return Locked([&](ManagerModel& model, TimePoint) {
        std::string error;
        if (Device* const player = ChoosePlayer(model, call.command["handle"].asUInt(), error)) {
            model.SetLocked(*player, isLocked);
        }
        return error;
    });
}

}  // namespace

std::span<const ControlCommand> DeviceCommands() {
    static constexpr auto kCommands = std::to_array<ControlCommand>(
        {{"lock",
          "locks a player: it cannot be opened, who has it open keeps it",
          {{kHandle}},
          [](ControlCall& call) { return SetLocked(call, true); }},
         {"plug", "plugs a device in and answers its handle", kPlugMembers, Plug},
         {"unlock",
          "unlocks a player",
          {{kHandle}},
          [](ControlCall& call) { return SetLocked(call, false); }},
         {"unplug",
          "unplugs a device; with a hub goes what hangs on it",
          {{{"handle", "needed unless exactly one is plugged in", MustBeNumber},
            {"handles", "several at once: all or none", MustBeNumbers},
            {"all", "true: every one", MustBeFlag}}},
          Unplug}});
    return kCommands;
}

Device* ChoosePlayer(const ManagerModel& model, std::uint32_t handle, std::string& error) {
    Device* chosen = nullptr;
    std::size_t players = 0;
    std::size_t opened = 0;
    for (const auto& device : model.Devices()) {
        const bool isMeant = handle == 0 || device->identity.handle == handle;
        if (!isMeant || !IsPlayer(device->identity.type)) {
            continue;
        }
        ++players;
        const bool isOpened = !device->openings.empty();
        opened += isOpened ? 1 : 0;
        chosen = chosen == nullptr || isOpened ? device.get() : chosen;
    }
    if (players == 1 || opened == 1) {
        return chosen;
    }
    error = handle != 0 ? "no player has handle " + std::to_string(handle)
                        : "\"handle\" must say which: " + std::to_string(players) + " players are plugged in";
    return nullptr;
}

}  // namespace DeviceSimulator
