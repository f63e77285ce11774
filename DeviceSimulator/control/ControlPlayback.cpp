// Control commands: a thumb on the player, and its now-playing queue.
#include <algorithm>
#include <memory>
#include <unordered_map>

#include "DeviceSimulator/control/ControlCommand.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

namespace {

constexpr std::uint32_t kPage = 20;
constexpr std::uint32_t kLargestPage = 1000;
/// Of a text in a message.
constexpr std::size_t kLongestQuote = 80;

/// What a thumb does; "play" and "toggle" may have to choose the music first, "seek" says where to.
constexpr auto kThumbWords = std::to_array<std::string_view>(
    {"play", "toggle", "seek", "pause", "stop", "next", "previous", "forward", "rewind", "release"});
enum Thumb : std::size_t { kPlay, kToggle, kSeek, kPause, kStop, kNext, kPrevious, kForward, kBack };

DevMgrResult Seek(Player& player, const Json::Value& command, TimePoint now) {
    std::uint32_t position = command["to"].asUInt();
    if (command.isMember("left")) {
        const std::uint32_t left = command["left"].asUInt();
        const std::uint32_t total = player.TotalMs();
        if (left > total && player.State() != E_DEVMGR_IPOD_PLAY_STOPPED) {
            return DEV_MGR_IAP_INVALID_INDEX;
        }
        position = total - std::min(left, total);
    }
    return player.MoveWithin(std::chrono::milliseconds{position}, now);
}

DevMgrResult Press(Player& player, std::size_t thumb, const Json::Value& command, TimePoint now) {
    switch (thumb) {
        case kSeek:
            return Seek(player, command, now);
        case kPause:
        case kToggle:
            return player.Pause(now);
        case kStop:
            player.Stop(now);
            return DEV_MGR_SUCCESS;
        case kNext:
            return player.Skip(DEV_MGR_SKIP_NEXT, now);
        case kPrevious:
            return player.Skip(DEV_MGR_SKIP_PREVIOUS, now);
        case kForward:
            return player.StartSeek(DEV_MGR_SEEK_FORWARD, now);
        case kBack:
            return player.StartSeek(DEV_MGR_SEEK_REWIND, now);
        default:
            player.EndSeek(now);
            return DEV_MGR_SUCCESS;
    }
}

std::string Explain(DevMgrResult result, const Player& player) {
    if (result == DEV_MGR_SUCCESS) {
        return {};
    }
    return result == DEV_MGR_IAP_INVALID_INDEX
               ? "the track is only " + std::to_string(player.TotalMs()) + " ms long"
               : "the player is stopped";
}

void SetModes(Player& player, const Json::Value& command, TimePoint now) {
    if (const auto shuffle = PlaceOf(command["shuffle"], kShuffleWords)) {
        player.SetShuffle(static_cast<DevMgrShuffleMode>(*shuffle), now);
    }
    if (const auto repeat = PlaceOf(command["repeat"], kRepeatWords)) {
        player.SetRepeat(static_cast<DevMgrRepeatMode>(*repeat));
    }
}

/// What `work`(device, now) says is wrong, or why no player is meant.
template <typename Work>
std::string OnPlayer(const Json::Value& command, Work work) {
    return Locked([&](ManagerModel& model, TimePoint now) {
        std::string error;
        Device* const device = ChoosePlayer(model, command["handle"].asUInt(), error);
        return device != nullptr ? std::string(work(*device, now)) : error;
    });
}

std::string PressPlay(const Json::Value& command) {
    std::string error;
    const DevMgrResult result = PlayOn(Engine::Instance(), [&](ManagerModel& model, Device*& device) {
        device = ChoosePlayer(model, command["handle"].asUInt(), error);
        return device != nullptr ? DEV_MGR_SUCCESS : DEV_MGR_INVALID_DEVICE_HANDLE;
    });
    return result == DEV_MGR_SUCCESS || !error.empty() ? error : "the library holds no tracks";
}

std::string LeadPlayer(ControlCall& call) {
    const Json::Value& command = call.command;
    const auto thumb = PlaceOf(command["do"], kThumbWords);
    const int times = command.isMember("to") + command.isMember("left");
    if (thumb == kSeek && times == 0) {
        return Complaint("to", MustBeNumber({}));
    }
    if (times > (thumb == kSeek ? 1 : 0)) {
        return "\"to\" or \"left\" goes with \"do\":\"seek\"";
    }
    if (!thumb && !command.isMember("shuffle") && !command.isMember("repeat")) {
        return "\"do\", \"shuffle\" or \"repeat\" must say what";
    }
    bool isPlay = thumb == kPlay;
    std::string error = OnPlayer(command, [&](const Device& device, TimePoint) {
        isPlay |= thumb == kToggle && device.player.State() != E_DEVMGR_IPOD_PLAY_PLAYING;
        return "";
    });
    if (error.empty() && isPlay) {
        error = PressPlay(command);
    }
    if (!error.empty()) {
        return error;
    }
    return OnPlayer(command, [&](Device& device, TimePoint now) {
        const DevMgrResult result =
            thumb && !isPlay ? Press(device.player, *thumb, command, now) : DEV_MGR_SUCCESS;
        if (result == DEV_MGR_SUCCESS) {
            SetModes(device.player, command, now);
        }
        return Explain(result, device.player);
    });
}

/// The library's tracks that `wanted` names by number or title. Returns what is wrong.
std::string FindTracks(const Json::Value& wanted, const Library& library, ItemList& tracks) {
    const auto count = static_cast<std::uint32_t>(library.TrackCount());
    std::unordered_map<std::string_view, std::uint32_t> byTitle;
    if (std::any_of(wanted.begin(), wanted.end(), [](const auto& item) { return item.isString(); })) {
        for (std::uint32_t track = 0; track < count; ++track) {
            byTitle.try_emplace(library.Track(track).title, track);
        }
    }
    for (const Json::Value& item : wanted) {
        if (item.isUInt() && item.asUInt() >= count) {
            return Complaint("tracks", "names track " + std::to_string(item.asUInt()) + " of " +
                                           std::to_string(count) + " that the library holds, from 0");
        }
        const auto found = item.isUInt() ? byTitle.end() : byTitle.find(item.asString());
        if (item.isString() && found == byTitle.end()) {
            return Complaint("tracks", "names \"" + item.asString().substr(0, kLongestQuote) +
                                           "\", which the library does not hold");
        }
        tracks.push_back(item.isUInt() ? item.asUInt() : found->second);
    }
    return tracks.empty() ? Complaint("tracks", "must not be empty") : "";
}

/// What a player is to play instead.
struct NewQueue {
    std::shared_ptr<const Library> library;
    std::shared_ptr<ItemList> tracks;  ///< null: the present ones
};

std::string FindNewQueue(const Json::Value& command, NewQueue& queue) {
    if (!command.isMember("tracks")) {
        return {};
    }
    MusicChoice choice;
    const std::string error = OnPlayer(command, [&](const Device& device, TimePoint) {
        choice = device.character.music;
        return "";
    });
    if (!error.empty()) {
        return error;
    }
    queue = {Engine::Instance().Music(choice)->Get(), std::make_shared<ItemList>()};
    return FindTracks(command["tracks"], *queue.library, *queue.tracks);
}

std::string ChangeQueue(Player& player, const Json::Value& command, const NewQueue& queue, TimePoint now) {
    const std::size_t size = queue.tracks != nullptr ? queue.tracks->size() : player.Queue().Count();
    const auto position = OptionalNumber(command["position"]);
    if (position.value_or(0) >= size && (position || queue.tracks != nullptr)) {
        return "\"position\" must be below " + std::to_string(size) + ", the queue's length";
    }
    if (command["start"].asUInt() > size) {
        return "\"start\" must be at most " + std::to_string(size) + ", the queue's length";
    }
    if (queue.tracks != nullptr) {
        player.Start(queue.library, queue.tracks, position.value_or(0), now);
    } else if (position) {
        player.Select(*position, now);
    }
    return {};
}

std::string ShowQueue(ControlCall& call) {
    const std::uint32_t start = call.command["start"].asUInt();
    const std::uint32_t most = call.command.get("count", kPage).asUInt();
    NewQueue wanted;
    const std::string error = FindNewQueue(call.command, wanted);
    if (!error.empty()) {
        return error;
    }
    return OnPlayer(call.command, [&](Device& device, TimePoint now) {
        const PlayQueue& queue = device.player.Queue();
        std::string wrong = ChangeQueue(device.player, call.command, wanted, now);
        call.answer["count"] = queue.Count();
        call.answer["position"] = queue.Position();
        call.answer["tracks"] = Json::arrayValue;
        for (std::uint32_t i = start; i < queue.Count() && i - start < most; ++i) {
            Json::Value track = DescribeTrack(*queue.Music(), queue.TrackAt(i));
            track["position"] = i;
            call.answer["tracks"].append(track);
        }
        return wrong;
    });
}

}  // namespace

std::span<const ControlCommand> PlaybackCommands() {
    static constexpr auto kCommands = std::to_array<ControlCommand>(
        {{"player",
          "a thumb on the player",
          {{kHandle,
            {"do", "play, pause, toggle, stop, next, previous, seek, forward, rewind or release",
             MustBeWord<kThumbWords>},
            {"shuffle", "off, tracks or albums", MustBeWord<kShuffleWords>},
            {"repeat", "off, one or all", MustBeWord<kRepeatWords>},
            {"to", "for seek: ms from the track's beginning", MustBeNumber},
            {"left", "for seek, instead: ms before the track's end", MustBeNumber}}},
          LeadPlayer},
         {"queue",
          "answers a page of the now-playing queue, after it has been changed",
          {{kHandle,
            {"position", "where in the queue to play, from 0", MustBeNumber},
            {"start", "where the page begins; 0", MustBeNumber},
            {"count", "the page's length; 20, at most 1000", MustBeAtMost<kLargestPage>},
            {"tracks", "an array of the library's track numbers or titles: the new queue, which plays",
             MustBeTracks}}},
          ShowQueue}});
    return kCommands;
}

}  // namespace DeviceSimulator
