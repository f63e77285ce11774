// Control commands: what becomes of calls, events by hand, and the record of the calls.
#include <algorithm>
#include <array>
#include <chrono>

#include "DeviceSimulator/control/ControlHandlers.h"
#include "DeviceSimulator/control/EventNames.h"
#include "DeviceSimulator/device/ArtworkVariant.h"
#include "DeviceSimulator/device/DeviceEvents.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;

void FailWith(ControlCall& call, std::uint32_t code) {
    const std::vector<FunctionId> functions = call.fields.Functions("call");
    const std::uint32_t times = call.fields.Number("times", ScriptEngine::kForEver);
    if (!call.fields.AreGood()) {
        return;
    }
    for (const FunctionId function : functions) {
        Engine::Instance().Scripts().Fail(function, code, times);
    }
}

/// The event's number and values: "name" and "words", or "words" alone.
std::vector<std::uint32_t> ReadEventWords(ControlFields& fields) {
    std::vector<std::uint32_t> words = fields.Numbers("words");
    if (fields.Has("name")) {
        const auto id = FindEvent(fields.Text("name"));
        if (!id) {
            fields.Complain("name", "is no event's name, such as \"play-time\" or DEV_MGR_EVENT_PLAY_TIME");
        }
        words.insert(words.begin(), id.value_or(0));
    }
    if (words.empty() || words.size() > std::size(DeviceEvent{}.words)) {
        fields.Complain("words", fields.Has("name") ? "must be 0 to 5 numbers" : "must be 1 to 6 numbers");
    }
    return words;
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

}  // namespace

void ControlFail(ControlCall& call) {
    FailWith(call, call.fields.Number("code"));
}

void ControlBusy(ControlCall& call) {
    FailWith(call, DEV_MGR_IAP_APP_BUSY);
}

void ControlDelay(ControlCall& call) {
    const std::vector<FunctionId> functions = call.fields.Functions("call");
    const std::chrono::milliseconds time{call.fields.Number("milliseconds")};
    const std::uint32_t times = call.fields.Number("times", ScriptEngine::kForEver);
    if (!call.fields.AreGood()) {
        return;
    }
    for (const FunctionId function : functions) {
        Engine::Instance().Scripts().Delay(function, time, times);
    }
}

void ControlArtwork(ControlCall& call) {
    const auto variant = FindArtworkVariant(call.fields.Text("variant", "as-is"));
    const std::chrono::milliseconds inProgress{call.fields.Number("inProgress", 0)};
    if (!variant) {
        call.fields.Complain("variant", "must be one of " + std::string(ArtworkVariantWords()));
    }
    if (call.fields.AreGood()) {
        Engine::Instance().Scripts().SetArtwork({*variant, inProgress});
    }
}

void ControlMemory(ControlCall& call) {
    const std::uint32_t largest = call.fields.Number("largest", UINT32_MAX);
    if (call.fields.AreGood()) {
        Engine::Instance().Scripts().SetLargestBlock(largest);
    }
}

void ControlEvent(ControlCall& call) {
    const std::vector<std::uint32_t> words = ReadEventWords(call.fields);
    const std::vector<std::string> texts = call.fields.Texts("texts");
    if (call.fields.AreGood()) {
        const std::vector<std::string_view> views(texts.begin(), texts.end());
        const DeviceEvent event = PackEvent(words, views);
        const bool isTaken = Engine::Instance().Loop().Locked(
            [&](ManagerModel& model, TimePoint) { return model.Fire(event); });
        if (!isTaken) {
            call.fields.Refuse("too many events wait for a process that takes none");
        }
    }
}

void ControlCalls(ControlCall& call) {
    CallLog::Filter filter;
    if (call.fields.Has("call")) {
        filter.only = call.fields.Function("call");
    }
    filter.since = call.fields.Number("since", 0);
    filter.limit = call.fields.Number("limit", UINT32_MAX);
    if (!call.fields.AreGood()) {
        return;
    }
    CallLog& log = Engine::Instance().Calls();
    // Asked first: a call that is made meanwhile is given twice rather than never.
    call.answer["next"] = Json::UInt64{log.NextNumber()};
    call.answer["calls"] = Json::arrayValue;
    for (const CallRecord& record : log.Records(filter)) {
        call.answer["calls"].append(ToJson(record));
    }
}

void ControlWait(ControlCall& call) {
    constexpr std::uint32_t kLongestWaitMs = 600'000;
    constexpr std::uint32_t kWaitMs = 5'000;
    const FunctionId function = call.fields.Function("call");
    const std::uint32_t times = call.fields.Number("times", 1);
    const std::uint32_t since = call.fields.Number("since", 0);
    const std::uint32_t timeout = call.fields.Number("timeout", kWaitMs);
    if (timeout > kLongestWaitMs) {
        call.fields.Complain("timeout", "is at most 600000");
    }
    if (!call.fields.AreGood()) {
        return;
    }
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds{timeout};
    do {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        const auto slice = std::clamp<std::chrono::milliseconds>(left, 0ms, 100ms);
        if (Engine::Instance().Calls().WaitFor(function, times, slice, since)) {
            return;
        }
    } while (std::chrono::steady_clock::now() < until && !call.isAborted());
    call.fields.Refuse(std::string(NameOf(function)) + " was not called " + std::to_string(times) +
                       " times within " + std::to_string(timeout) + " ms");
}

void ControlClear(ControlCall& call) {
    static constexpr auto kWords = std::to_array<std::string_view>({"calls", "scripts"});
    const auto what = call.fields.Word("what", kWords);
    if (!call.fields.AreGood()) {
        return;
    }
    if (what != 1U) {
        Engine::Instance().Calls().Clear();
    }
    if (what != 0U) {
        Engine::Instance().Scripts().Clear();
    }
}

}  // namespace DeviceSimulator
