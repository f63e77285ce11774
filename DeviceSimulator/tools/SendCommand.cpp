// "ipodsim send WORDS...": sends a command to the simulated player's control socket and prints its answer.
#include <CLI/CLI.hpp>

#include <json/json.h>
#include <sys/socket.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "ServiceUtil/Descriptor.h"
#include "ServiceUtil/JsonText.h"
#include "ServiceUtil/LocalSocket.h"

namespace {

using Clock = std::chrono::steady_clock;

enum Status : int { kDone = 0, kRefused = 1, kUsage = 2, kNoPlayer = 3 };

constexpr const char* kDemoSocket = "build/demo/state/control";
/// Longer than the longest "wait".
constexpr timeval kPatience{660, 0};

struct Options {
    std::vector<std::string> words;
    std::string control;
    double waitSeconds = 0;
};

int Complain(Status status, const std::string& what) {
    std::cerr << "ipodsim: " << what << '\n';
    return status;
}

/// A lone word that holds a brace is the command as it stands.
std::optional<Json::Value> ToCommand(const std::vector<std::string>& words, std::string& error) {
    if (words.size() == 1 && words.front().find('{') != std::string::npos) {
        const auto command = ReadJson(words.front());
        error = "this is no JSON object";
        return command && command->isObject() ? command : std::nullopt;
    }
    Json::Value command;
    command["command"] = words.front();
    for (std::size_t i = 1; i < words.size(); ++i) {
        const std::size_t sign = words[i].find('=');
        if (sign == std::string::npos || sign == 0) {
            error = '"' + words[i] + "\" is not name=value";
            return std::nullopt;
        }
        const std::string text = words[i].substr(sign + 1);
        command[words[i].substr(0, sign)] = ReadJson(text).value_or(text);
    }
    return command;
}

/// Empty when there is none.
std::string FindSocket(const std::string& asked) {
    const char* variable = std::getenv("DEVICE_SIMULATOR_CONTROL");
    if (!asked.empty() || (variable != nullptr && *variable != '\0')) {
        return !asked.empty() ? asked : variable;
    }
    std::error_code ignored;
    return std::filesystem::exists(kDemoSocket, ignored) ? kDemoSocket : "";
}

/// None at the deadline, and `errno` then says why.
Descriptor Connect(const LocalAddress& address, Clock::time_point deadline) {
    while (true) {
        Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        if (connect(socket.Get(), address.Generic(), address.length) == 0) {
            setsockopt(socket.Get(), SOL_SOCKET, SO_RCVTIMEO, &kPatience, sizeof kPatience);
            return socket;
        }
        if (Clock::now() >= deadline) {
            return Descriptor();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds{20});
    }
}

/// The answer's line; none when the connection ends before.
std::optional<std::string> Exchange(const Descriptor& socket, const std::string& line) {
    if (!SendAll(socket.Get(), std::as_bytes(std::span(line)))) {
        return std::nullopt;
    }
    std::string answer;
    std::array<char, 65536> bytes;
    while (answer.empty() || answer.back() != '\n') {
        const ssize_t count = recv(socket.Get(), bytes.data(), bytes.size(), 0);
        if (count <= 0) {
            return std::nullopt;
        }
        answer.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return answer;
}

int Send(const Options& options) {
    std::string error;
    const auto command = ToCommand(options.words, error);
    if (!command) {
        return Complain(kUsage, error);
    }
    const std::string path = FindSocket(options.control);
    if (path.empty()) {
        return Complain(kNoPlayer,
                        "no control socket: start scripts/run-demo.sh, or name one with --control");
    }
    const auto address = LocalAddressOf(path);
    if (!address) {
        return Complain(kNoPlayer, path + " is too long a path for a control socket");
    }
    const std::chrono::duration<double> wait(options.waitSeconds);
    const Descriptor socket =
        Connect(*address, Clock::now() + std::chrono::duration_cast<Clock::duration>(wait));
    if (!socket.IsOpen()) {
        return Complain(kNoPlayer, path + " is no control socket that answers: " + std::strerror(errno));
    }
    const auto line = Exchange(socket, WriteJson(*command) + '\n');
    if (!line) {
        return Complain(kNoPlayer, path + " has closed the connection");
    }
    const auto answer = ReadJson(*line);
    if (!answer || !answer->isObject()) {
        return Complain(kNoPlayer, path + " does not answer as a control socket does");
    }
    std::cout << *line;
    return (*answer)["ok"] == true ? kDone : kRefused;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    CLI::App app{
        "Leads the simulated player of a running service.\n\n"
        "Exit status: 0 done; 1 the command was refused; 2 usage; 3 no control socket."};
    app.name("ipodsim");
    app.require_subcommand(1);
    auto* send = app.add_subcommand("send", "Sends a control command and prints its answer");
    send->add_option("COMMAND", options.words, "One of JSON, or its words: plug type=iap2 name=Phone")
        ->required();
    send->add_option("--control", options.control,
                     "The control socket. Else DEVICE_SIMULATOR_CONTROL, else the demo's");
    send->add_option("--wait", options.waitSeconds, "How many seconds to wait for the connection; 0")
        ->check(CLI::Range(0.0, 3600.0));
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
            app.exit(error);
            return kDone;
        }
        return Complain(kUsage, std::string(error.what()) + ". See ipodsim --help.");
    }
    return Send(options);
}
