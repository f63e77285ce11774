// A connection to a simulated player's control socket: lines of JSON out, lines of JSON in.
#pragma once

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

#include "IpodControl/Problem.h"

namespace ScenarioRunner {

/// One thread uses it.
class ControlSocket {
  public:
    ControlSocket() = default;
    ~ControlSocket() { Close(); }
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    IpodControl::Outcome<IpodControl::Done> Open(const std::string& path);
    void Close();
    bool IsOpen() const { return m_socket >= 0; }
    /// To poll for input.
    int Descriptor() const { return m_socket; }

    /// `line` has no line end of its own. Waits while the other side takes nothing, for 5 s.
    IpodControl::Outcome<IpodControl::Done> Send(std::string_view line);
    /// The answers that have come.
    IpodControl::Outcome<std::vector<Json::Value>> Receive();

  private:
    IpodControl::Problem Fail(IpodControl::ProblemKind kind, const std::string& what);

    std::string m_path;
    int m_socket = -1;
    std::string m_received;
};

}  // namespace ScenarioRunner
