#include "DeviceSimulator/ControlCommands.h"

#include <json/json.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <exception>
#include <memory>
#include <optional>

#include "DeviceSimulator/ArtworkVariant.h"
#include "DeviceSimulator/ControlFields.h"
#include "DeviceSimulator/DeviceEvents.h"
#include "DeviceSimulator/Engine.h"

namespace DeviceSimulator {

namespace {

using namespace std::chrono_literals;
using IsAborted = std::function<bool()>;

Json::Value Failure(const std::string& error) {
    Json::Value answer;
    answer["ok"] = false;
    answer["error"] = error;
    return answer;
}

Json::Value Success() {
    Json::Value answer;
    answer["ok"] = true;
    return answer;
}

Json::Value Plug(ControlFields& fields, const IsAborted&) {
    DeviceDescription device;
    device.type = fields.Type("type", device.type);
    device.handle = fields.OptionalNumber("handle");
    device.name = fields.Text("name", "");
    device.productId = fields.OptionalNumber("product");
    device.vendorId = fields.OptionalNumber("vendor");
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    const std::uint32_t handle = Simulator::Instance().Plug(device);
    if (handle == 0) {
        return Failure("handle " + std::to_string(device.handle.value_or(0)) + " is taken");
    }
    Json::Value answer = Success();
    answer["handle"] = handle;
    return answer;
}

Json::Value ListDevices() {
    return Engine::Instance().Loop().Locked([](Model& model, TimePoint) {
        Json::Value list(Json::arrayValue);
        for (const auto& device : model.Devices()) {
            Json::Value entry;
            entry["handle"] = device->identity.handle;
            entry["type"] = device->identity.type;
            entry["name"] = device->identity.name;
            entry["product"] = device->identity.productId;
            entry["vendor"] = device->identity.vendorId;
            list.append(entry);
        }
        return list;
    });
}

Json::Value Unplug(ControlFields& fields, const IsAborted&) {
    std::optional<std::uint32_t> handle = fields.OptionalNumber("handle");
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    if (!handle) {
        const Json::Value devices = ListDevices();
        if (devices.size() != 1) {
            return Failure("\"handle\" must say which: " + std::to_string(devices.size()) +
                           " devices are plugged in");
        }
        handle = devices[0]["handle"].asUInt();
    }
    return Simulator::Instance().Unplug(*handle) ? Success()
                                                 : Failure("no device has handle " + std::to_string(*handle));
}

Json::Value Devices(ControlFields&, const IsAborted&) {
    Json::Value answer = Success();
    answer["devices"] = ListDevices();
    return answer;
}

Json::Value Fail(ControlFields& fields, const IsAborted&) {
    const FunctionId function = fields.Function("call");
    const std::uint32_t code = fields.Number("code");
    const std::uint32_t times = fields.Number("times", Simulator::kForEver);
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    Engine::Instance().Scripts().Fail(function, code, times);
    return Success();
}

Json::Value Delay(ControlFields& fields, const IsAborted&) {
    const FunctionId function = fields.Function("call");
    const std::chrono::milliseconds time{fields.Number("milliseconds")};
    const std::uint32_t times = fields.Number("times", Simulator::kForEver);
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    Engine::Instance().Scripts().Delay(function, time, times);
    return Success();
}

Json::Value Artwork(ControlFields& fields, const IsAborted&) {
    const auto variant = FindArtworkVariant(fields.Text("variant", "as-is"));
    const std::chrono::milliseconds inProgress{fields.Number("inProgress", 0)};
    if (!variant) {
        fields.Complain("variant", "must be one of " + std::string(ArtworkVariantWords()));
    }
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    Engine::Instance().Scripts().SetArtwork({*variant, inProgress});
    return Success();
}

Json::Value Event(ControlFields& fields, const IsAborted&) {
    const std::vector<std::uint32_t> words = fields.Numbers("words");
    const std::vector<std::string> texts = fields.Texts("texts");
    if (words.empty() || words.size() > std::size(DeviceEvent{}.words)) {
        fields.Complain("words", "must be 1 to 6 numbers");
    }
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    const std::vector<std::string_view> views(texts.begin(), texts.end());
    Simulator::Instance().Fire(PackEvent(words, views));
    return Success();
}

Json::Value ToJson(const CallRecord& record) {
    Json::Value call;
    call["name"] = record.name;
    call["arguments"] = Json::arrayValue;
    for (const std::int64_t argument : record.arguments) {
        call["arguments"].append(Json::Value(Json::Int64{argument}));
    }
    if (!record.text.empty()) {
        call["text"] = record.text;
    }
    call["result"] = record.result;
    call["thread"] = Json::UInt64{record.thread};
    return call;
}

Json::Value Calls(ControlFields& fields, const IsAborted&) {
    std::optional<FunctionId> only;
    if (fields.Has("call")) {
        only = fields.Function("call");
    }
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    Json::Value answer = Success();
    answer["calls"] = Json::arrayValue;
    for (const CallRecord& record : Engine::Instance().Calls().Records(only)) {
        answer["calls"].append(ToJson(record));
    }
    return answer;
}

Json::Value Wait(ControlFields& fields, const IsAborted& isAborted) {
    constexpr std::uint32_t kLongestWaitMs = 600'000;
    constexpr std::uint32_t kWaitMs = 5'000;
    const FunctionId function = fields.Function("call");
    const std::uint32_t times = fields.Number("times", 1);
    const std::uint32_t timeout = fields.Number("timeout", kWaitMs);
    if (timeout > kLongestWaitMs) {
        fields.Complain("timeout", "is at most 600000");
    }
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds{timeout};
    do {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(until - std::chrono::steady_clock::now());
        const auto slice = std::clamp<std::chrono::milliseconds>(left, 0ms, 100ms);
        if (Engine::Instance().Calls().WaitFor(function, times, slice)) {
            return Success();
        }
    } while (std::chrono::steady_clock::now() < until && !isAborted());
    return Failure(std::string(NameOf(function)) + " was not called " + std::to_string(times) +
                   " times within " + std::to_string(timeout) + " ms");
}

Json::Value Clear(ControlFields& fields, const IsAborted&) {
    const std::string what = fields.Text("what", "");
    if (!what.empty() && what != "calls" && what != "scripts") {
        fields.Complain("what", "must be \"calls\" or \"scripts\"");
    }
    if (!fields.Error().empty()) {
        return Failure(fields.Error());
    }
    if (what != "scripts") {
        Engine::Instance().Calls().Clear();
    }
    if (what != "calls") {
        Engine::Instance().Scripts().Clear();
    }
    return Success();
}

struct Command {
    std::string_view name;
    std::array<std::string_view, 5> members;
    Json::Value (*run)(ControlFields&, const IsAborted&);
};

constexpr std::array<Command, 10> kCommands{{{"artwork", {"variant", "inProgress"}, Artwork},
                                             {"calls", {"call"}, Calls},
                                             {"clear", {"what"}, Clear},
                                             {"delay", {"call", "milliseconds", "times"}, Delay},
                                             {"devices", {}, Devices},
                                             {"event", {"words", "texts"}, Event},
                                             {"fail", {"call", "code", "times"}, Fail},
                                             {"plug", {"type", "handle", "name", "product", "vendor"}, Plug},
                                             {"unplug", {"handle"}, Unplug},
                                             {"wait", {"call", "times", "timeout"}, Wait}}};

/// False with what is wrong in `error`.
bool Parse(std::string_view line, Json::Value& command, std::string& error) {
    constexpr int kDeepestNesting = 8;
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["stackLimit"] = kDeepestNesting;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    const bool isGood = reader->parse(line.data(), line.data() + line.size(), &command, &error);
    if (!isGood || !command.isObject()) {
        error = "not a JSON object: " + error;
        return false;
    }
    return true;
}

Json::Value Run(const Json::Value& command, const IsAborted& isAborted) {
    ControlFields fields(command);
    const std::string name = fields.Text("command");
    const auto* found = std::find_if(kCommands.begin(), kCommands.end(),
                                     [&](const Command& entry) { return entry.name == name; });
    if (found == kCommands.end()) {
        std::string names;
        for (const Command& entry : kCommands) {
            names.append(names.empty() ? "" : ", ").append(entry.name);
        }
        return Failure("\"command\" must be one of " + names);
    }
    fields.AllowOnly(found->members);
    return found->run(fields, isAborted);
}

std::string Write(const Json::Value& answer) {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    return Json::writeString(builder, answer);
}

}  // namespace

std::string AnswerControlLine(std::string_view line, const std::function<bool()>& isAborted) {
    try {
        Json::Value command;
        std::string error;
        return Write(Parse(line, command, error) ? Run(command, isAborted) : Failure(error));
    } catch (const std::exception& error) {
        return Write(Failure(error.what()));
    }
}

}  // namespace DeviceSimulator
