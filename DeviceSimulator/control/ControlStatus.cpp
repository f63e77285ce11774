// Control commands: the whole state in one view, and parts of it.
#include "DeviceSimulator/control/ControlCommand.h"
#include "DeviceSimulator/sound/SoundPresence.h"

namespace DeviceSimulator {

namespace {

constexpr auto kStateWords =
    std::to_array<std::string_view>({"playing", "paused", "stopped", "forward", "rewind"});
constexpr auto kPresenceWords = std::to_array<std::string_view>({"gone", "there"});
constexpr auto kXrunWords = std::to_array<std::string_view>({"capture", "playback"});

std::string MustBeDrift(const Json::Value& value) {
    const std::string most = std::to_string(kMostDriftPpm);
    const bool isGood = value.isInt() && value.asInt() >= -kMostDriftPpm && value.asInt() <= kMostDriftPpm;
    return isGood ? "" : "must be a whole number from -" + most + " to " + most;
}

/// By its number in `words`.
template <typename Number, typename Words>
std::string WordFor(Number number, const Words& words) {
    return std::string(words[static_cast<std::size_t>(number)]);
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

Json::Value DescribePlayer(const Player& player, TimePoint now) {
    const PlayQueue& queue = player.Queue();
    Json::Value description;
    description["state"] = WordFor(player.State(), kStateWords);
    description["shuffle"] = WordFor(queue.Shuffle(), kShuffleWords);
    description["repeat"] = WordFor(player.Repeat(), kRepeatWords);
    description["count"] = queue.Count();
    if (!queue.IsEmpty()) {
        description["position"] = queue.Position();
        description["elapsed"] = player.ElapsedMs(now);
        description["total"] = player.TotalMs();
        description["track"] = DescribeTrack(*queue.Music(), queue.TrackAt(queue.Position()));
    }
    return description;
}

Json::Value DescribeState(const Device& device, TimePoint now) {
    Json::Value description = DescribeDevice(device);
    description["openings"] = Json::UInt64{device.openings.size()};
    if (IsPlayer(device.identity.type)) {
        description["locked"] = device.isLocked;
        description["player"] = DescribePlayer(device.player, now);
    }
    if (IsIap2(device.identity.type)) {
        description["database"] = device.database.Percentage();
    }
    return description;
}

/// Those in force, by function; times that are left out never run out.
Json::Value DescribeScripts() {
    const auto scripts = Engine::Instance().Scripts().Active();
    Json::Value list(Json::arrayValue);
    const auto add = [&](FunctionId function, const char* what, std::int64_t value, std::uint32_t times) {
        if (times == 0) {
            return;
        }
        Json::Value entry;
        entry["call"] = std::string(NameOf(function));
        entry[what] = Json::Int64{value};
        if (times != ScriptEngine::kForEver) {
            entry["times"] = times;
        }
        list.append(entry);
    };
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        const auto function = static_cast<FunctionId>(i);
        add(function, "code", scripts[i].failCode, scripts[i].failTimes);
        add(function, "milliseconds", scripts[i].delay.count(), scripts[i].delayTimes);
    }
    return list;
}

/// None without a simulated sound card.
Json::Value DescribeSound() {
    const auto presence = ReadSoundPresence();
    if (!presence) {
        return {};
    }
    Json::Value sound;
    sound["capture"] = WordFor(presence->hasCapture, kPresenceWords);
    sound["playback"] = WordFor(presence->hasPlayback, kPresenceWords);
    if (presence->driftPpm != 0) {
        sound["ppm"] = presence->driftPpm;
    }
    if (presence->refusedHz != 0) {
        sound["refuse"] = presence->refusedHz;
    }
    return sound;
}

std::string ListDevices(ControlCall& call) {
    call.answer["devices"] = Json::arrayValue;
    Locked([&](const ManagerModel& model, TimePoint) {
        for (const auto& device : model.Devices()) {
            call.answer["devices"].append(DescribeDevice(*device));
        }
    });
    return {};
}

std::string ChangeSound(ControlCall& call) {
    const Json::Value& command = call.command;
    const SoundPresence before = ReadSoundPresence().value_or(SoundPresence{});
    std::string error = SetSoundPresence({
        .hasCapture = PlaceOf(command["capture"], kPresenceWords).value_or(before.hasCapture) == 1,
        .hasPlayback = PlaceOf(command["playback"], kPresenceWords).value_or(before.hasPlayback) == 1,
        .driftPpm = command.get("ppm", before.driftPpm).asInt(),
        .refusedHz = command.get("refuse", before.refusedHz).asUInt(),
    });
    if (error.empty() && command.isMember("xrun")) {
        error = CauseXrun(command["xrun"] == "capture");
    }
    call.answer["sound"] = DescribeSound();
    return error;
}

std::string TellStatus(ControlCall& call) {
    Locked([&](ManagerModel& model, TimePoint now) {
        call.answer["processes"] = Json::UInt64{model.Processes().Handles().size()};
        call.answer["devices"] = Json::arrayValue;
        for (const auto& device : model.Devices()) {
            call.answer["devices"].append(DescribeState(*device, now));
        }
    });
    call.answer["artwork"] = WordFor(Engine::Instance().Scripts().Artwork().variant, kArtworkWords);
    call.answer["scripts"] = DescribeScripts();
    if (const Json::Value sound = DescribeSound(); !sound.isNull()) {
        call.answer["sound"] = sound;
    }
    return {};
}

}  // namespace

std::span<const ControlCommand> StatusCommands() {
    static constexpr auto kCommands = std::to_array<ControlCommand>(
        {{"devices", "answers what is plugged in", {}, ListDevices},
         {"sound",
          "lets the sound devices vanish, return and falter, and answers how they are",
          {{{"capture", "the player's audio: gone or there", MustBeWord<kPresenceWords>},
            {"playback", "the unit's output: gone or there", MustBeWord<kPresenceWords>},
            {"ppm", "how much too fast the player's clock runs from the next start on; 0", MustBeDrift},
            {"refuse", "the rate in Hz that the unit's output refuses from then on; 0: none", MustBeNumber},
            {"xrun", "which of them runs over once: capture or playback", MustBeWord<kXrunWords>}}},
          ChangeSound},
         {"status",
          "answers the devices with what they play, the processes and what is in force",
          {},
          TellStatus}});
    return kCommands;
}

Json::Value DescribeTrack(const Library& library, std::uint32_t track) {
    const TrackInfo info = library.Track(track);
    Json::Value description;
    description["track"] = track;
    description["title"] = std::string(info.title);
    description["artist"] = std::string(info.artist);
    description["album"] = std::string(info.album);
    return description;
}

}  // namespace DeviceSimulator
