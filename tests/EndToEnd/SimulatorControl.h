// Leads the simulated player behind a running service.
#pragma once

#include <json/json.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/EndToEnd/Socket.h"

namespace EndToEnd {

class SimulatorControl {
  public:
    static constexpr std::uint32_t kForEver = UINT32_MAX;

    /// Waits for the socket, which is there once the service has made its first device-manager call.
    SimulatorControl();

    /// `type`: for example "iap2". The device's handle.
    std::uint32_t Plug(const std::string& type);
    void Unplug(std::uint32_t handle);
    void Fail(const std::string& function, std::uint32_t code, std::uint32_t times = kForEver);
    void ClearScripts();
    void Event(const std::vector<std::uint32_t>& words, const std::vector<std::string>& texts = {});
    void ForgetCalls();
    /// Since ForgetCalls, or since the start.
    bool HasBeenCalled(const std::string& function);

  private:
    Json::Value Ask(const Json::Value& command);
    /// Throws std::runtime_error when the simulator refuses.
    Json::Value Do(const Json::Value& command);

    LineSocket m_socket;
};

}  // namespace EndToEnd
