#include "DeviceSimulator/embedded/Simulator.h"

#include <utility>

#include "DeviceSimulator/control/ControlCommands.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

namespace {

Engine& Started() {
    Engine::Instance().EnsureStarted();
    return Engine::Instance();
}

}  // namespace

Simulator& Simulator::Instance() {
    static auto* const kSimulator = new Simulator;
    return *kSimulator;
}

void Simulator::Reset(SimulatorOptions options) {
    Engine::Instance().Reset(std::move(options));
}

std::uint32_t Simulator::Plug(const DeviceDescription& device) {
    return Started().Loop().Locked([&](ManagerModel& model, TimePoint) { return model.Plug(device); });
}

bool Simulator::Unplug(std::uint32_t handle) {
    return Started().Loop().Locked([&](ManagerModel& model, TimePoint) { return model.Unplug(handle); });
}

std::string Simulator::Command(std::string_view line) {
    Started();
    return AnswerControlLine(line, [] { return false; });
}

bool Simulator::Fail(std::string_view name, std::uint32_t code, std::uint32_t times) {
    const auto function = FindFunction(name);
    if (function) {
        Started().Scripts().Fail(*function, code, times);
    }
    return function.has_value();
}

bool Simulator::Delay(std::string_view name, std::chrono::milliseconds time, std::uint32_t times) {
    const auto function = FindFunction(name);
    if (function) {
        Started().Scripts().Delay(*function, time, times);
    }
    return function.has_value();
}

void Simulator::SetArtwork(ArtworkVariant variant, std::chrono::milliseconds inProgress) {
    Started().Scripts().SetArtwork({variant, inProgress});
}

void Simulator::ClearScripts() {
    Started().Scripts().Clear();
}

void Simulator::SetStandIns(StandIns standIns) {
    Started().Scripts().SetStandIns(std::move(standIns));
}

void Simulator::Fire(const DeviceEvent& event) {
    Started().Loop().Locked([&](ManagerModel& model, TimePoint) { model.Fire(event); });
}

void Simulator::Drain() {
    Started().Loop().Drain();
}

std::vector<CallRecord> Simulator::Calls() const {
    return Started().Calls().Records({});
}

std::vector<CallRecord> Simulator::Calls(std::string_view name) const {
    const auto function = FindFunction(name);
    return function ? Started().Calls().Records({.only = function}) : std::vector<CallRecord>{};
}

void Simulator::ClearCalls() {
    Started().Calls().Clear();
}

bool Simulator::WaitForCall(std::string_view name, std::size_t times,
                            std::chrono::milliseconds timeout) const {
    const auto function = FindFunction(name);
    return function && Started().Calls().WaitFor(*function, times, timeout);
}

}  // namespace DeviceSimulator
