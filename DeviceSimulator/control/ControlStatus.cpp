// Control commands: the whole state in one view.
#include <array>

#include "DeviceSimulator/control/ControlHandlers.h"
#include "DeviceSimulator/device/ArtworkVariant.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

namespace {

constexpr auto kStateWords =
    std::to_array<std::string_view>({"playing", "paused", "stopped", "forward", "rewind"});

/// By its number in `words`.
template <typename Number, typename Words>
std::string WordFor(Number number, const Words& words) {
    return std::string(words[static_cast<std::size_t>(number)]);
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

}  // namespace

void ControlStatus(ControlCall& call) {
    Engine::Instance().Loop().Locked([&](ManagerModel& model, TimePoint now) {
        call.answer["processes"] = Json::UInt64{model.Processes().Handles().size()};
        call.answer["devices"] = Json::arrayValue;
        for (const auto& device : model.Devices()) {
            call.answer["devices"].append(DescribeState(*device, now));
        }
    });
    const ArtworkScript artwork = Engine::Instance().Scripts().Artwork();
    call.answer["artwork"] = std::string(ArtworkVariantWord(artwork.variant));
    call.answer["scripts"] = DescribeScripts();
    if (const Json::Value sound = DescribeSound(); !sound.isNull()) {
        call.answer["sound"] = sound;
    }
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
