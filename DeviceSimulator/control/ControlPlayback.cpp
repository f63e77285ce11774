// Control commands: a thumb on the player, and its now-playing queue.
#include <algorithm>
#include <array>
#include <memory>
#include <unordered_map>

#include "DeviceSimulator/control/ControlHandlers.h"
#include "DeviceSimulator/run/Engine.h"
#include "DeviceSimulator/run/PlayOn.h"

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

struct ThumbOrder {
    std::uint32_t handle = 0;
    std::optional<std::size_t> thumb;
    std::uint32_t time = 0;  ///< of a seek
    bool isFromEnd = false;
    std::optional<std::size_t> shuffle;
    std::optional<std::size_t> repeat;
};

DevMgrResult Seek(Player& player, const ThumbOrder& order, TimePoint now) {
    const std::uint32_t total = player.TotalMs();
    if (order.isFromEnd && order.time > total && player.State() != E_DEVMGR_IPOD_PLAY_STOPPED) {
        return DEV_MGR_IAP_INVALID_INDEX;
    }
    const std::uint32_t position = order.isFromEnd ? total - std::min(order.time, total) : order.time;
    return player.MoveWithin(std::chrono::milliseconds{position}, now);
}

DevMgrResult Press(Player& player, const ThumbOrder& order, TimePoint now) {
    switch (*order.thumb) {
        case kSeek:
            return Seek(player, order, now);
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

void SetModes(Player& player, const ThumbOrder& order, TimePoint now) {
    if (order.shuffle) {
        player.SetShuffle(static_cast<DevMgrShuffleMode>(*order.shuffle), now);
    }
    if (order.repeat) {
        player.SetRepeat(static_cast<DevMgrRepeatMode>(*order.repeat));
    }
}

/// `work`(player, now) says what is wrong.
template <typename Work>
void OnPlayer(ControlCall& call, std::uint32_t handle, Work work) {
    Engine::Instance().Loop().Locked([&](ManagerModel& model, TimePoint now) {
        std::string error;
        if (Device* device = ChoosePlayer(model, handle, error)) {
            error = work(device->player, now);
        }
        call.fields.Refuse(error);
    });
}

bool IsPlay(ControlCall& call, const ThumbOrder& order) {
    bool isPlaying = false;
    OnPlayer(call, order.handle, [&](const Player& player, TimePoint) {
        isPlaying = player.State() == E_DEVMGR_IPOD_PLAY_PLAYING;
        return std::string();
    });
    return order.thumb == kPlay || (order.thumb == kToggle && !isPlaying);
}

void PressPlay(ControlCall& call, const ThumbOrder& order) {
    std::string error;
    const DevMgrResult result = PlayOn(Engine::Instance(), [&](ManagerModel& model, Device*& device) {
        device = ChoosePlayer(model, order.handle, error);
        return device != nullptr ? DEV_MGR_SUCCESS : DEV_MGR_INVALID_DEVICE_HANDLE;
    });
    call.fields.Refuse(error);
    if (result != DEV_MGR_SUCCESS) {
        call.fields.Refuse("the library holds no tracks");
    }
}

/// The library's tracks that "tracks" names by number or title.
std::shared_ptr<const ItemList> FindTracks(ControlFields& fields, const Library& library) {
    const auto count = static_cast<std::uint32_t>(library.TrackCount());
    const std::vector<Json::Value> wanted = fields.Items("tracks");
    std::unordered_map<std::string_view, std::uint32_t> byTitle;
    if (std::any_of(wanted.begin(), wanted.end(), [](const auto& item) { return item.isString(); })) {
        for (std::uint32_t track = 0; track < count; ++track) {
            byTitle.try_emplace(library.Track(track).title, track);
        }
    }
    auto tracks = std::make_shared<ItemList>();
    for (const Json::Value& item : wanted) {
        if (item.isUInt() && item.asUInt() >= count) {
            fields.Complain("tracks", "names track " + std::to_string(item.asUInt()) + " of " +
                                          std::to_string(count) + " that the library holds, from 0");
        } else if (item.isUInt()) {
            tracks->push_back(item.asUInt());
        } else if (const auto found = byTitle.find(item.asString()); found != byTitle.end()) {
            tracks->push_back(found->second);
        } else {
            fields.Complain("tracks", "names \"" + item.asString().substr(0, kLongestQuote) +
                                          "\", which the library does not hold");
        }
    }
    if (tracks->empty()) {
        fields.Complain("tracks", "must not be empty");
    }
    return tracks;
}

struct QueueOrder {
    std::uint32_t handle = 0;
    std::shared_ptr<const Library> library;
    std::shared_ptr<const ItemList> tracks;  // null: the present ones
    std::optional<std::uint32_t> position;
    std::uint32_t start = 0;
    std::uint32_t count = kPage;
};

MusicChoice ChoiceOf(ControlFields& fields, std::uint32_t handle) {
    return Engine::Instance().Loop().Locked([&](ManagerModel& model, TimePoint) {
        std::string error;
        const Device* const player = ChoosePlayer(model, handle, error);
        fields.Refuse(error);
        return player != nullptr ? player->character.music : MusicChoice{};
    });
}

QueueOrder ReadQueueOrder(ControlFields& fields) {
    QueueOrder order;
    order.handle = fields.Number("handle", 0);
    order.position = fields.OptionalNumber("position");
    order.start = fields.Number("start", 0);
    order.count = fields.Number("count", kPage);
    if (order.count > kLargestPage) {
        fields.Complain("count", "is at most 1000");
    }
    if (fields.Has("tracks") && fields.AreGood()) {
        order.library = Engine::Instance().Music(ChoiceOf(fields, order.handle))->Get();
        order.tracks = FindTracks(fields, *order.library);
    }
    return order;
}

std::string ChangeQueue(Player& player, const QueueOrder& order, TimePoint now) {
    const std::size_t size = order.tracks != nullptr ? order.tracks->size() : player.Queue().Count();
    if (order.position.value_or(0) >= size && (order.position || order.tracks != nullptr)) {
        return "\"position\" must be below " + std::to_string(size) + ", the queue's length";
    }
    if (order.start > size) {
        return "\"start\" must be at most " + std::to_string(size) + ", the queue's length";
    }
    if (order.tracks != nullptr) {
        player.Start(order.library, order.tracks, order.position.value_or(0), now);
    } else if (order.position) {
        player.Select(*order.position, now);
    }
    return {};
}

void DescribeQueue(const PlayQueue& queue, const QueueOrder& order, Json::Value& answer) {
    answer["count"] = queue.Count();
    answer["position"] = queue.Position();
    answer["tracks"] = Json::arrayValue;
    for (std::uint32_t i = order.start; i < queue.Count() && i - order.start < order.count; ++i) {
        Json::Value track = DescribeTrack(*queue.Music(), queue.TrackAt(i));
        track["position"] = i;
        answer["tracks"].append(track);
    }
}

}  // namespace

void ControlPlayer(ControlCall& call) {
    ThumbOrder order;
    order.handle = call.fields.Number("handle", 0);
    order.thumb = call.fields.Word("do", kThumbWords);
    order.shuffle = call.fields.Word("shuffle", kShuffleWords);
    order.repeat = call.fields.Word("repeat", kRepeatWords);
    order.isFromEnd = call.fields.Has("left");
    const bool hasTime = order.isFromEnd || call.fields.Has("to");
    if (order.thumb == kSeek || hasTime) {
        order.time = call.fields.Number(order.isFromEnd ? "left" : "to");
    }
    if ((hasTime && order.thumb != kSeek) || (order.isFromEnd && call.fields.Has("to"))) {
        call.fields.Refuse("\"to\" or \"left\" goes with \"do\":\"seek\"");
    }
    if (!order.thumb && !order.shuffle && !order.repeat) {
        call.fields.Refuse("\"do\", \"shuffle\" or \"repeat\" must say what");
    }
    if (!call.fields.AreGood()) {
        return;
    }
    const bool isPlay = IsPlay(call, order);
    if (isPlay && call.fields.AreGood()) {
        PressPlay(call, order);
    }
    if (!call.fields.AreGood()) {
        return;
    }
    OnPlayer(call, order.handle, [&](Player& player, TimePoint now) {
        std::string error;
        if (order.thumb && !isPlay) {
            error = Explain(Press(player, order, now), player);
        }
        if (error.empty()) {
            SetModes(player, order, now);
        }
        return error;
    });
}

void ControlQueue(ControlCall& call) {
    const QueueOrder order = ReadQueueOrder(call.fields);
    if (!call.fields.AreGood()) {
        return;
    }
    OnPlayer(call, order.handle, [&](Player& player, TimePoint now) {
        std::string error = ChangeQueue(player, order, now);
        DescribeQueue(player.Queue(), order, call.answer);
        return error;
    });
}

}  // namespace DeviceSimulator
