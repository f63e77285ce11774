#include "tests/EndToEnd/SimulatorControl.h"

#include <stdexcept>
#include <system_error>

#include "tests/EndToEnd/RpcClient.h"
#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {

namespace {

Json::Value Command(const char* name) {
    Json::Value command;
    command["command"] = name;
    return command;
}

LineSocket Connect() {
    std::optional<LineSocket> socket;
    Require("the simulator's control socket", [&] {
        try {
            socket = LineSocket::ConnectUnix(kControlSocket);
        } catch (const std::system_error&) {
        }
        return socket.has_value();
    });
    return std::move(*socket);
}

}  // namespace

SimulatorControl::SimulatorControl() : m_socket(Connect()) {}

std::uint32_t SimulatorControl::Plug(const std::string& type) {
    Json::Value command = Command("plug");
    command["type"] = type;
    return Do(command)["handle"].asUInt();
}

void SimulatorControl::Unplug(std::uint32_t handle) {
    Json::Value command = Command("unplug");
    command["handle"] = handle;
    Do(command);
}

void SimulatorControl::Fail(const std::string& function, std::uint32_t code, std::uint32_t times) {
    Json::Value command = Command("fail");
    command["call"] = function;
    command["code"] = code;
    command["times"] = times;
    Do(command);
}

void SimulatorControl::ClearScripts() {
    Json::Value command = Command("clear");
    command["what"] = "scripts";
    Do(command);
}

void SimulatorControl::Event(const std::vector<std::uint32_t>& words, const std::vector<std::string>& texts) {
    Json::Value command = Command("event");
    for (const std::uint32_t word : words)
        command["words"].append(word);
    command["texts"] = Json::arrayValue;
    for (const std::string& text : texts)
        command["texts"].append(text);
    Do(command);
}

void SimulatorControl::ForgetCalls() {
    Json::Value command = Command("clear");
    command["what"] = "calls";
    Do(command);
}

bool SimulatorControl::HasBeenCalled(const std::string& function) {
    Json::Value command = Command("wait");
    command["call"] = function;
    command["timeout"] = 0;
    return Ask(command)["ok"].asBool();
}

Json::Value SimulatorControl::Ask(const Json::Value& command) {
    m_socket.Send(ToLine(command) + "\n");
    const std::optional<std::string> answer = m_socket.ReadLine();
    if (!answer)
        throw std::runtime_error("the simulator has hung up");
    return ParseJson(*answer);
}

Json::Value SimulatorControl::Do(const Json::Value& command) {
    const Json::Value answer = Ask(command);
    if (!answer["ok"].asBool())
        throw std::runtime_error(ToLine(command) + ": " + answer["error"].asString());
    return answer;
}

}  // namespace EndToEnd
