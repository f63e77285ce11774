// Control commands: what becomes of calls, events by hand, and the record of the calls.
#include <algorithm>
#include <chrono>

#include "DeviceSimulator/control/ControlCommand.h"
#include "DeviceSimulator/control/EventNames.h"
#include "DeviceSimulator/device/DeviceEvents.h"

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kLongestWaitMs = 600'000;
constexpr std::uint32_t kWaitMs = 5'000;

constexpr auto kClearWords = std::to_array<std::string_view>({"calls", "scripts"});

std::string MustBeVariant(const Json::Value& value) {
    return value.isString() ? MustBeOneOf(value, kArtworkWords) : MustBeText(value);
}

std::uint32_t TimesOf(const ControlCall& call) {
    return call.command.get("times", ScriptEngine::kForEver).asUInt();
}

std::string FailWith(const ControlCall& call, std::uint32_t code) {
    for (const FunctionId function : FunctionsOf(call.command["call"])) {
        Engine::Instance().Scripts().Fail(function, code, TimesOf(call));
    }
    return {};
}

std::string Delay(ControlCall& call) {
    const std::chrono::milliseconds time{call.command["milliseconds"].asUInt()};
    for (const FunctionId function : FunctionsOf(call.command["call"])) {
        Engine::Instance().Scripts().Delay(function, time, TimesOf(call));
    }
    return {};
}

std::string SetArtwork(ControlCall& call) {
    const auto variant =
        static_cast<ArtworkVariant>(PlaceOf(call.command["variant"], kArtworkWords).value_or(0));
    Engine::Instance().Scripts().SetArtwork(
        {variant, std::chrono::milliseconds{call.command["inProgress"].asUInt()}});
    return {};
}

std::string BoundMemory(ControlCall& call) {
    Engine::Instance().Scripts().SetLargestBlock(call.command.get("largest", UINT32_MAX).asUInt());
    return {};
}

std::string FireEvent(ControlCall& call) {
    const bool hasName = call.command.isMember("name");
    std::vector<std::uint32_t> words = NumbersOf(call.command["words"]);
    if (hasName) {
        const auto id = FindEvent(call.command["name"].asString());
        if (!id) {
            return Complaint("name", "is no event's name, such as \"play-time\" or DEV_MGR_EVENT_PLAY_TIME");
        }
        words.insert(words.begin(), *id);
    }
    if (words.empty() || words.size() > std::size(DeviceEvent{}.words)) {
        return Complaint("words", hasName ? "must be 0 to 5 numbers" : "must be 1 to 6 numbers");
    }
    std::vector<std::string> texts;
    for (const Json::Value& text : call.command["texts"]) {
        texts.push_back(text.asString());
    }
    const DeviceEvent event = MakeEvent(words, std::vector<std::string_view>(texts.begin(), texts.end()));
    const bool isTaken = Locked([&](ManagerModel& model, TimePoint) { return model.Fire(event); });
    return isTaken ? "" : "too many events wait for a process that takes none";
}

Json::Value ToJson(const CallRecord& record) {
    Json::Value call;
    call["name"] = record.name;
    call["number"] = Json::UInt64{record.number};
    call["arguments"] = Json::arrayValue;
    for (const std::int64_t argument : record.arguments) {
        call["arguments"].append(Json::Value(Json::Int64{argument}));
    }
    if (!record.text.empty()) {
        call["text"] = record.text;
    }
    if (record.isRunning) {
        call["running"] = true;
    }
    call["result"] = record.result;
    call["thread"] = Json::UInt64{record.thread};
    return call;
}

std::string ListCalls(ControlCall& call) {
    CallLog::Filter filter;
    filter.only = FindFunction(call.command["call"].asString());
    filter.since = call.command["since"].asUInt();
    filter.limit = call.command.get("limit", UINT32_MAX).asUInt();
    const CallLog& log = Engine::Instance().Calls();
    // Asked first: a call that is made meanwhile is given twice rather than never.
    call.answer["next"] = Json::UInt64{log.NextNumber()};
    call.answer["calls"] = Json::arrayValue;
    for (const CallRecord& record : log.Records(filter)) {
        call.answer["calls"].append(ToJson(record));
    }
    return {};
}

std::string Wait(ControlCall& call) {
    const std::string name = call.command["call"].asString();
    const std::uint32_t times = call.command.get("times", 1).asUInt();
    const std::uint32_t since = call.command["since"].asUInt();
    const std::uint32_t timeout = call.command.get("timeout", kWaitMs).asUInt();
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds{timeout};
    do {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        const auto slice = std::clamp<std::chrono::milliseconds>(left, 0ms, 100ms);
        if (Engine::Instance().Calls().WaitFor(*FindFunction(name), times, slice, since)) {
            return {};
        }
    } while (std::chrono::steady_clock::now() < until && !call.isAborted());
    return name + " was not called " + std::to_string(times) + " times within " + std::to_string(timeout) +
           " ms";
}

std::string Clear(ControlCall& call) {
    const Json::Value& what = call.command["what"];
    if (what != "scripts") {
        Engine::Instance().Calls().Clear();
    }
    if (what != "calls") {
        Engine::Instance().Scripts().Clear();
    }
    return {};
}

constexpr Member kAnyCall{"call", "a function's name, or * for every function, each counted by itself",
                          MustNameFunctions, true};
constexpr Member kTimes{"times", "so many calls; else for ever; 0 takes it back", MustBeNumber};

}  // namespace

std::span<const ControlCommand> ScriptCommands() {
    static constexpr auto kCommands = std::to_array<ControlCommand>(
        {{"artwork",
          "what becomes of every track's cover",
          {{{"variant", "as-is (default), none, truncated, not-jpeg, narrow, huge or limit", MustBeVariant},
            {"inProgress", "ms from a track's beginning during which its cover is being fetched; 0",
             MustBeNumber}}},
          SetArtwork},
         {"busy",
          "makes the next calls answer that the player is busy (94)",
          {{kAnyCall, kTimes}},
          [](ControlCall& call) { return FailWith(call, DEV_MGR_IAP_APP_BUSY); }},
         {"calls",
          "answers the calls made, oldest first, and the number of the next one",
          {{{"call", "only of that function", MustNameFunction},
            {"since", "only from that number on", MustBeNumber},
            {"limit", "the newest so many", MustBeNumber}}},
          ListCalls},
         {"clear",
          "forgets the calls; takes fail, busy, delay, artwork and memory back and releases delayed calls",
          {{{"what", "only \"calls\", or only \"scripts\"", MustBeWord<kClearWords>}}},
          Clear},
         {"delay",
          "makes the next calls take that long first",
          {{kAnyCall, {"milliseconds", "how long", MustBeNumber, true}, kTimes}},
          Delay},
         {"event",
          "hands an event to every process",
          {{{"words", "1 to 6 numbers, the first the event's; with a name the 0 to 5 behind it",
             MustBeNumbers},
            {"name", "the event's name, such as play-time or DEV_MGR_EVENT_PLAY_TIME", MustBeText},
            {"texts", "packed one after another", MustBeTexts}}},
          FireEvent},
         {"fail",
          "makes the next calls answer a code and do nothing else",
          {{{"code", "the result code", MustBeNumber, true}, kAnyCall, kTimes}},
          [](ControlCall& call) { return FailWith(call, call.command["code"].asUInt()); }},
         {"memory",
          "bounds the blocks of shared memory that are granted from then on",
          {{{"largest", "bytes; without it there is no bound", MustBeNumber}}},
          BoundMemory},
         {"wait",
          "answers once a call has begun so often since the last clear",
          {{{"call", "a function's name, such as eDevMgriPodPlay", MustNameFunction, true},
            {"times", "1", MustBeNumber},
            {"since", "only calls from that number on, see calls", MustBeNumber},
            {"timeout", "5000 ms, at most 600000", MustBeAtMost<kLongestWaitMs>}}},
          Wait}});
    return kCommands;
}

}  // namespace DeviceSimulator
