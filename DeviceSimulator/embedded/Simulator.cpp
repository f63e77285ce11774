#include "DeviceSimulator/embedded/Simulator.h"

#include <utility>

#include "DeviceSimulator/control/ControlCommands.h"
#include "DeviceSimulator/run/Engine.h"

namespace DeviceSimulator {

class Simulator::State {
  public:
    Engine& Started() {
        engine.EnsureStarted();
        return engine;
    }

    Engine& engine = Engine::Instance();
};

Simulator::Simulator() : m_state(std::make_unique<State>()) {}
Simulator::~Simulator() = default;

Simulator& Simulator::Instance() {
    static auto* const kSimulator = new Simulator;
    return *kSimulator;
}

void Simulator::Reset(SimulatorOptions options) {
    m_state->engine.Reset(std::move(options));
}

std::uint32_t Simulator::Plug(const DeviceDescription& device) {
    return m_state->Started().Loop().Locked(
        [&](ManagerModel& model, TimePoint) { return model.Plug(device); });
}

bool Simulator::Unplug(std::uint32_t handle) {
    return m_state->Started().Loop().Locked(
        [&](ManagerModel& model, TimePoint) { return model.Unplug(handle); });
}

std::string Simulator::Command(std::string_view line) {
    m_state->Started();
    return AnswerControlLine(line, [] { return false; });
}

bool Simulator::Fail(std::string_view name, std::uint32_t code, std::uint32_t times) {
    const auto function = FindFunction(name);
    if (function) {
        m_state->Started().Scripts().Fail(*function, code, times);
    }
    return function.has_value();
}

bool Simulator::Delay(std::string_view name, std::chrono::milliseconds time, std::uint32_t times) {
    const auto function = FindFunction(name);
    if (function) {
        m_state->Started().Scripts().Delay(*function, time, times);
    }
    return function.has_value();
}

void Simulator::SetArtwork(ArtworkVariant variant, std::chrono::milliseconds inProgress) {
    m_state->Started().Scripts().SetArtwork({variant, inProgress});
}

void Simulator::ClearScripts() {
    m_state->Started().Scripts().Clear();
}

void Simulator::SetStandIns(StandIns standIns) {
    m_state->Started().SetStandIns(std::move(standIns));
}

void Simulator::Fire(const DeviceEvent& event) {
    m_state->Started().Loop().Locked([&](ManagerModel& model, TimePoint) { model.Fire(event); });
}

void Simulator::Drain() {
    m_state->Started().Loop().Drain();
}

std::vector<CallRecord> Simulator::Calls() const {
    return m_state->Started().Calls().Records({});
}

std::vector<CallRecord> Simulator::Calls(std::string_view name) const {
    const auto function = FindFunction(name);
    return function ? m_state->Started().Calls().Records({.only = function}) : std::vector<CallRecord>{};
}

void Simulator::ClearCalls() {
    m_state->Started().Calls().Clear();
}

bool Simulator::WaitForCall(std::string_view name, std::size_t times,
                            std::chrono::milliseconds timeout) const {
    const auto function = FindFunction(name);
    return function && m_state->Started().Calls().WaitFor(*function, times, timeout);
}

}  // namespace DeviceSimulator
