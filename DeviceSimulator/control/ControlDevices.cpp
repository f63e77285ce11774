// Control commands: devices that come and go.
#include <algorithm>
#include <array>

#include "DeviceSimulator/control/ControlHandlers.h"
#include "DeviceSimulator/device/DeviceTypes.h"
#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/sound/SoundPresence.h"

namespace DeviceSimulator {

namespace {

constexpr auto kDeviceMembers =
    std::to_array<std::string_view>({"type", "handle", "name", "product", "vendor", "hub", "locked", "music",
                                     "tracks", "sort", "seed", "build", "ids", "page", "covers"});
constexpr auto kSortWords = std::to_array<std::string_view>({"no-article", "article", "bytes"});
constexpr auto kIdWords = std::to_array<std::string_view>({"positions", "stable"});
constexpr auto kCoverWords = std::to_array<std::string_view>({"stored", "wanted", "length"});
constexpr auto kPresenceWords = std::to_array<std::string_view>({"gone", "there"});
constexpr auto kXrunWords = std::to_array<std::string_view>({"capture", "playback"});

/// The value of the word's place; the first when the member is absent.
template <typename Value>
Value ReadWord(ControlFields& fields, std::string_view member, std::span<const std::string_view> words) {
    return static_cast<Value>(fields.Word(member, words).value_or(0));
}

Character ReadCharacter(ControlFields& fields) {
    Character character;
    character.music.folder = fields.Text("music", "");
    character.music.tracks = fields.OptionalNumber("tracks");
    character.music.sorting = ReadWord<Sorting>(fields, "sort", kSortWords);
    character.seed = fields.OptionalNumber("seed");
    if (const auto build = fields.OptionalNumber("build")) {
        character.databaseBuildTime = std::chrono::milliseconds(*build);
    }
    character.ids = ReadWord<ItemIds>(fields, "ids", kIdWords);
    character.pageLimit = fields.Number("page", 0);
    character.covers = ReadWord<CoverSize>(fields, "covers", kCoverWords);
    if (!character.music.folder.empty() && character.music.tracks) {
        fields.Refuse("only one of \"music\" and \"tracks\" can say what it holds");
    }
    if (character.music.tracks.value_or(0) > kMostSyntheticTracks) {
        fields.Complain("tracks", "is at most " + std::to_string(kMostSyntheticTracks));
    }
    return character;
}

DeviceDescription ReadDescription(ControlFields& fields) {
    DeviceDescription device;
    device.type = fields.Type("type", device.type);
    device.handle = fields.OptionalNumber("handle");
    device.name = fields.Text("name", "");
    device.productId = fields.OptionalNumber("product");
    device.vendorId = fields.OptionalNumber("vendor");
    device.hub = fields.Number("hub", 0);
    device.isLocked = fields.Flag("locked", false);
    device.character = ReadCharacter(fields);
    if (device.handle == 0U) {
        fields.Complain("handle", "must not be 0");
    }
    return device;
}

/// One device from the command's own members, or those of "devices".
std::vector<DeviceDescription> ReadDescriptions(ControlFields& fields) {
    if (!fields.Has("devices")) {
        return {ReadDescription(fields)};
    }
    std::vector<DeviceDescription> descriptions;
    for (const Json::Value& object : fields.Objects("devices")) {
        ControlFields device(object);
        device.AllowOnly(kDeviceMembers);
        descriptions.push_back(ReadDescription(device));
        if (!device.AreGood()) {
            fields.Refuse("\"devices\"[" + std::to_string(descriptions.size() - 1) + "]: " + device.Error());
        }
    }
    for (const std::string_view member : kDeviceMembers) {
        if (fields.Has(member)) {
            fields.Complain(member, "stands in \"devices\"");
        }
    }
    return descriptions;
}

/// The handles that "handle", "handles" or "all" mean; without any of them, of the only device.
std::vector<std::uint32_t> ReadHandles(ControlFields& fields, const ManagerModel& model) {
    std::vector<std::uint32_t> all;
    for (const auto& device : model.Devices()) {
        all.push_back(device->identity.handle);
    }
    if (fields.Has("handle") + fields.Has("handles") + fields.Has("all") > 1) {
        fields.Refuse("only one of \"handle\", \"handles\" and \"all\" can say which");
    }
    if (fields.Flag("all", false)) {
        return all;
    }
    if (fields.Has("handles")) {
        return fields.Numbers("handles");
    }
    if (fields.Has("handle")) {
        return {fields.Number("handle")};
    }
    if (all.size() != 1) {
        fields.Refuse("\"handle\" must say which: " + std::to_string(all.size()) + " devices are plugged in");
    }
    return all;
}

void SetLocked(ControlCall& call, bool isLocked) {
    const std::uint32_t handle = call.fields.Number("handle", 0);
    if (!call.fields.AreGood()) {
        return;
    }
    Engine::Instance().Loop().Locked([&](ManagerModel& model, TimePoint) {
        std::string error;
        if (const Device* player = ChoosePlayer(model, handle, error)) {
            model.SetLocked(player->identity.handle, isLocked);
        }
        call.fields.Refuse(error);
    });
}

}  // namespace

void ControlPlug(ControlCall& call) {
    std::vector<DeviceDescription> descriptions = ReadDescriptions(call.fields);
    if (!call.fields.AreGood()) {
        return;
    }
    for (const DeviceDescription& device : descriptions) {
        if (IsPlayer(device.type)) {
            Engine::Instance().Music(device.character.music)->Prepare();
        }
    }
    const auto handles = Engine::Instance().Loop().Locked([&](ManagerModel& model, TimePoint) {
        std::string error;
        auto plugged = model.PlugAll(std::move(descriptions), error);
        call.fields.Refuse(error);
        return plugged;
    });
    if (!call.fields.Has("devices") && !handles.empty()) {
        call.answer["handle"] = handles.front();
        return;
    }
    call.answer["handles"] = Json::arrayValue;
    for (const std::uint32_t handle : handles) {
        call.answer["handles"].append(handle);
    }
}

void ControlUnplug(ControlCall& call) {
    Engine::Instance().Loop().Locked([&](ManagerModel& model, TimePoint) {
        const auto handles = ReadHandles(call.fields, model);
        for (const std::uint32_t handle : handles) {
            if (model.Find(handle) == nullptr) {
                call.fields.Refuse("no device has handle " + std::to_string(handle));
            }
        }
        if (call.fields.AreGood()) {
            std::for_each(handles.begin(), handles.end(), [&](auto handle) { model.Unplug(handle); });
        }
    });
}

void ControlDevices(ControlCall& call) {
    call.answer["devices"] = Engine::Instance().Loop().Locked([](ManagerModel& model, TimePoint) {
        Json::Value list(Json::arrayValue);
        for (const auto& device : model.Devices()) {
            list.append(DescribeDevice(*device));
        }
        return list;
    });
}

void ControlLock(ControlCall& call) {
    SetLocked(call, true);
}

void ControlUnlock(ControlCall& call) {
    SetLocked(call, false);
}

void ControlSound(ControlCall& call) {
    const auto capture = call.fields.Word("capture", kPresenceWords);
    const auto playback = call.fields.Word("playback", kPresenceWords);
    const auto drift = call.fields.OptionalSigned("ppm", kMostDriftPpm);
    const auto refused = call.fields.OptionalNumber("refuse");
    const auto xrun = call.fields.Word("xrun", kXrunWords);
    if (!call.fields.AreGood()) {
        return;
    }
    SoundPresence presence = ReadSoundPresence().value_or(SoundPresence{});
    presence.hasCapture = capture ? *capture == 1 : presence.hasCapture;
    presence.hasPlayback = playback ? *playback == 1 : presence.hasPlayback;
    presence.driftPpm = drift.value_or(presence.driftPpm);
    presence.refusedHz = refused.value_or(presence.refusedHz);
    call.fields.Refuse(SetSoundPresence(presence));
    if (xrun && call.fields.AreGood()) {
        call.fields.Refuse(CauseXrun(*xrun == 0));
    }
    call.answer["sound"] = DescribeSound();
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

Json::Value DescribeDevice(const Device& device) {
    Json::Value description;
    description["handle"] = device.identity.handle;
    description["type"] = device.identity.type;
    description["kind"] = std::string(DeviceTypeWord(device.identity.type));
    description["name"] = device.identity.name;
    description["product"] = device.identity.productId;
    description["vendor"] = device.identity.vendorId;
    if (device.identity.hub != 0) {
        description["hub"] = device.identity.hub;
    }
    return description;
}

Json::Value DescribeSound() {
    const auto presence = ReadSoundPresence();
    if (!presence) {
        return {};
    }
    Json::Value sound;
    sound["capture"] = std::string(kPresenceWords[presence->hasCapture ? 1 : 0]);
    sound["playback"] = std::string(kPresenceWords[presence->hasPlayback ? 1 : 0]);
    if (presence->driftPpm != 0) {
        sound["ppm"] = presence->driftPpm;
    }
    if (presence->refusedHz != 0) {
        sound["refuse"] = presence->refusedHz;
    }
    return sound;
}

}  // namespace DeviceSimulator
