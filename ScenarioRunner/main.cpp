// "ipodsim": runs scenario files against a service with the simulated player.
#include <CLI/CLI.hpp>

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "IpodControl/Endpoint.h"
#include "IpodControl/Message.h"
#include "ScenarioRunner/Report.h"
#include "ScenarioRunner/Runner.h"
#include "ScenarioRunner/ScenarioParser.h"
#include "ScenarioRunner/Session.h"

namespace ScenarioRunner {
namespace {

using namespace std::chrono_literals;
using IpodControl::In;

enum Status : int { kAllHeld = 0, kFailed = 1, kUsage = 2, kNoService = 3 };

constexpr const char* kDemoSocket = "build/demo/state/control";

struct Options {
    std::vector<std::string> files;
    std::vector<std::string> words;
    std::string control;
    IpodControl::Endpoint endpoint;
    double waitSeconds = 0;
    bool isJson = false;
    RunOptions run;

    IpodControl::Deadline ConnectDeadline() const {
        return In(std::chrono::milliseconds{static_cast<std::int64_t>(waitSeconds * 1000)});
    }
};

int Complain(Status status, const std::string& what) {
    std::cerr << "ipodsim: " << what << '\n';
    return status;
}

std::string FindControl(const std::string& asked) {
    const char* variable = std::getenv("DEVICE_SIMULATOR_CONTROL");
    if (!asked.empty() || (variable != nullptr && *variable != '\0')) {
        return !asked.empty() ? asked : variable;
    }
    std::error_code ignored;
    return std::filesystem::exists(kDemoSocket, ignored) ? kDemoSocket : "";
}

int NoControl() {
    return Complain(kNoService, "no control socket: start scripts/run-demo.sh, or name one with --control");
}

void Print(const std::string& file, const std::vector<Fault>& faults) {
    for (const Fault& fault : faults) {
        std::cerr << file << ':' << fault.line << ':' << fault.column << ": " << fault.text << '\n';
    }
}

/// False, with everything that is wrong on stderr, unless all of them can be read and parsed.
bool Load(const std::vector<std::string>& files, std::vector<Scenario>& scenarios) {
    constexpr std::uintmax_t kLargest = 1U << 20;
    bool isGood = true;
    for (const std::string& file : files) {
        std::error_code error;
        std::ifstream stream(file, std::ios::binary);
        const bool isFile = std::filesystem::is_regular_file(file, error);
        if (!stream || !isFile || std::filesystem::file_size(file, error) > kLargest) {
            Complain(kUsage, file + " is no file that can be read, of at most 1 MiB");
            isGood = false;
            continue;
        }
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        std::vector<Fault> faults;
        scenarios.push_back(ParseScenario(file, text, faults));
        Print(file, faults);
        isGood = isGood && faults.empty();
    }
    return isGood;
}

int Check(const Options& options) {
    std::vector<Scenario> scenarios;
    return Load(options.files, scenarios) ? kAllHeld : kUsage;
}

int Run(const Options& options) {
    std::vector<Scenario> scenarios;
    if (!Load(options.files, scenarios)) {
        return kUsage;
    }
    const std::string control = FindControl(options.control);
    if (control.empty()) {
        return NoControl();
    }
    Session session;
    if (const auto connected = session.Connect(options.endpoint, control, options.ConnectDeadline());
        !connected) {
        return Complain(kNoService, connected.Why().text);
    }
    Json::Value help;
    help["command"] = "help";
    const auto answer = session.Command(help, In(10s));
    if (!answer) {
        return Complain(kNoService, answer.Why().text);
    }
    bool isGood = true;
    for (const Scenario& scenario : scenarios) {
        const auto faults = CheckCommands(scenario.steps, (*answer)["commands"]);
        Print(scenario.file, faults);
        isGood = isGood && faults.empty();
    }
    if (!isGood) {
        return kUsage;
    }
    const auto report = options.isJson ? MakeJsonReport(std::cout) : MakeTextReport(std::cout);
    Runner runner(session, *report, options.run);
    for (const Scenario& scenario : scenarios) {
        isGood = runner.Run(scenario) && isGood;
    }
    return isGood ? kAllHeld : kFailed;
}

int Send(const Options& options) {
    std::string error;
    const Json::Value command = ParseCommandWords(options.words, error);
    if (!error.empty()) {
        return Complain(kUsage, error);
    }
    const std::string control = FindControl(options.control);
    if (control.empty()) {
        return NoControl();
    }
    Session session;
    if (const auto opened = session.OpenControl(control, options.ConnectDeadline()); !opened) {
        return Complain(kNoService, opened.Why().text);
    }
    const auto answer = session.Command(command, In(11min));
    if (!answer) {
        return Complain(kNoService, answer.Why().text);
    }
    std::cout << IpodControl::ToLine(*answer) << '\n';
    return (*answer)["ok"] == true ? kAllHeld : kFailed;
}

void AddConnection(CLI::App& command, Options& options) {
    command.add_option("--control", options.control,
                       "The control socket. Else DEVICE_SIMULATOR_CONTROL, else the demo's");
    command.add_option("--wait", options.waitSeconds, "How many seconds to wait for the connection; 0")
        ->check(CLI::Range(0.0, 3600.0));
}

int Main(int argc, char** argv) {
    Options options;
    CLI::App app{
        "Leads the simulated player of a running service.\n\n"
        "Exit status: 0 done, all held; 1 an expectation failed, or the command was refused;\n"
        "2 usage, or a file that does not parse; 3 no service or no control socket."};
    app.name("ipodsim");
    app.require_subcommand(1);
    auto* run = app.add_subcommand("run", "Runs scenario files and reports step by step");
    run->add_option("FILE", options.files, "Scenario files")->required();
    run->add_option("--host", options.endpoint.host, "Where the service listens; 127.0.0.1");
    run->add_option("--port", options.endpoint.port, "8883");
    run->add_option("--patience", options.run.patience, "Multiplies the times of \"within\"; 1")
        ->check(CLI::Range(0.1, 100.0));
    run->add_flag("--keep-going", options.run.goesOnOnFailure, "Goes on behind a step that fails");
    run->add_flag("--json", options.isJson, "Reports an object of JSON a line");
    AddConnection(*run, options);
    auto* check = app.add_subcommand("check", "Parses scenario files and runs nothing");
    check->add_option("FILE", options.files, "Scenario files")->required();
    auto* send = app.add_subcommand("send", "Sends a control command and prints its answer");
    send->add_option("COMMAND", options.words, "One of JSON, or its words: plug type=iap2 name=Phone")
        ->required();
    AddConnection(*send, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app.exit(error);
            return kAllHeld;
        }
        const auto extra = app.remaining();
        const bool isUnknown = app.get_subcommands().empty() && !extra.empty();
        return Complain(kUsage, (isUnknown ? "there is no command \"" + extra.front() + '"' : error.what()) +
                                    std::string(". See ipodsim --help."));
    }
    if (*run) {
        return Run(options);
    }
    return *check ? Check(options) : Send(options);
}

}  // namespace
}  // namespace ScenarioRunner

int main(int argc, char** argv) {
    try {
        return ScenarioRunner::Main(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "ipodsim: " << error.what() << '\n';
        return ScenarioRunner::kFailed;
    }
}
