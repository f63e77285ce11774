#include "DeviceSimulator/run/ScriptEngine.h"

#include <utility>

namespace DeviceSimulator {

namespace {

bool Use(std::uint32_t& times) {
    if (times == 0) {
        return false;
    }
    if (times != ScriptEngine::kForEver) {
        --times;
    }
    return true;
}

}  // namespace

void ScriptEngine::Clear() {
    const std::lock_guard lock(m_mutex);
    m_scripts = {};
    m_artwork = {};
    m_largestBlock = UINT32_MAX;
    ++m_generation;
    m_cleared.notify_all();
}

void ScriptEngine::SetStandIns(StandIns standIns) {
    auto replacement = std::make_shared<const StandIns>(std::move(standIns));
    const std::lock_guard lock(m_mutex);
    m_standIns.swap(replacement);
}

ScriptEngine::Instead ScriptEngine::Apply(FunctionId function) {
    std::unique_lock lock(m_mutex);
    CallScript& script = m_scripts[IndexOf(function)];
    if (Use(script.delayTimes)) {
        const auto until = std::chrono::steady_clock::now() + script.delay;
        m_cleared.wait_until(lock, until,
                             [this, generation = m_generation] { return m_generation != generation; });
    }
    return {Use(script.failTimes) ? std::optional(script.failCode) : std::nullopt, m_standIns};
}

}  // namespace DeviceSimulator
