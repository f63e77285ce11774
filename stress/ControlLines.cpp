// "control_lines [SECONDS]": clients of the control socket that hang, flood, never read, hang up in the
// middle and talk nonsense, beside one that sends commands with random errors and must get an answer to each
// within 10 s.

#include <json/json.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <thread>
#include <vector>

#include "DeviceSimulator/control/ControlServer.h"
#include "DeviceSimulator/embedded/Simulator.h"
#include "ServiceUtil/Descriptor.h"
#include "stress/Mutation.h"

namespace {

constexpr auto kCommands = std::to_array<const char*>(
    {R"({"command":"plug","type":"iap","name":"Phone","handle":3,"locked":true})",
     R"({"command":"plug","devices":[{"type":"hub","handle":9},{"hub":9},{"type":"stick"}]})",
     R"({"command":"unplug","handles":[3,9]})",
     R"({"command":"unplug","all":true})",
     R"({"command":"status"})",
     R"({"command":"devices"})",
     R"({"command":"help","about":"plug"})",
     R"({"command":"player","do":"play","shuffle":"albums","repeat":"all"})",
     R"({"command":"player","do":"seek","left":900,"handle":3})",
     R"({"command":"player","do":"rewind"})",
     R"({"command":"queue","tracks":[1,2,"The Song"],"position":1,"start":1,"count":3})",
     R"({"command":"fail","call":"*","code":94,"times":2})",
     R"({"command":"lock"})",
     R"({"command":"delay","call":"eDevMgriPodPlay","milliseconds":10})",
     R"({"command":"unlock"})",
     R"({"command":"event","name":"play-time","words":[1,2],"texts":["a","b"]})",
     R"({"command":"clear"})",
     R"({"command":"artwork","variant":"huge","inProgress":99})",
     R"({"command":"sound","capture":"gone"})",
     R"({"command":"calls","call":"eDevMgriPodPlay","since":1,"limit":9})"});

Descriptor Connect(const std::string& path) {
    Descriptor fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const bool isConnected =
        connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    return isConnected ? std::move(fd) : Descriptor{};
}

void Send(int fd, const std::string& text, int flags) {
    send(fd, text.data(), text.size(), MSG_NOSIGNAL | flags);
}

std::string RandomBytes(std::mt19937& random, std::size_t size) {
    std::string bytes(size, ' ');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() & 0xFFU); });
    return bytes;
}

void MisbehaveOnce(const std::string& path, std::mt19937& random) {
    const Descriptor fd = Connect(path);
    const std::string command = kCommands[Fuzz::Below(random, kCommands.size())];
    switch (Fuzz::Below(random, 5)) {
        case 0:
            Send(fd.Get(), RandomBytes(random, 1 + Fuzz::Below(random, 100'000)), 0);
            break;
        case 1:
            Send(fd.Get(), command.substr(0, Fuzz::Below(random, command.size())), 0);
            break;
        case 2:
            // Answers that nobody reads.
            for (int i = 0; i < 1000; ++i) {
                Send(fd.Get(), "{\"command\":\"help\"}\n", MSG_DONTWAIT);
            }
            break;
        case 3:
            Send(fd.Get(), "{\"command\":\"wait\",\"call\":\"eDevMgriPodStop\",\"timeout\":600000}\n", 0);
            break;
        default:
            break;
    }
    poll(nullptr, 0, static_cast<int>(Fuzz::Below(random, 30)));
}

/// Empty at the end of the connection, and after 10 s.
std::string ReadLine(int fd) {
    std::string line;
    std::array<char, 4096> bytes;
    pollfd entry{fd, POLLIN, 0};
    while ((line.empty() || line.back() != '\n') && poll(&entry, 1, 10'000) > 0) {
        const ssize_t count = recv(fd, bytes.data(), bytes.size(), 0);
        if (count <= 0) {
            return {};
        }
        line.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return line;
}

bool IsAnswer(const std::string& line) {
    Json::Value answer;
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    return reader->parse(line.data(), line.data() + line.size(), &answer, nullptr) && answer["ok"].isBool();
}

/// An end without an answer is what the client too many meets, or the one that was silent; then it tries
/// again.
bool IsAnswered(const std::string& path, const std::string& command) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (std::chrono::steady_clock::now() < deadline) {
        const Descriptor fd = Connect(path);
        Send(fd.Get(), command + "\n", 0);
        const std::string answer = ReadLine(fd.Get());
        if (!answer.empty() && answer.find("too many clients") == std::string::npos) {
            return IsAnswer(answer);
        }
    }
    return false;
}

std::string OneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text.find_first_not_of(" \t\r") == std::string::npos ? "{}" : text;
}

}  // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 10;
    std::string folder = (std::filesystem::temp_directory_path() / "control-lines-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        return 1;
    }
    DeviceSimulator::Simulator::Instance().Reset();
    auto server = DeviceSimulator::ControlServer::Open(folder + "/control");
    std::atomic<bool> isOver{false};
    std::vector<std::thread> hostile;
    for (int i = 0; i < 6; ++i) {
        hostile.emplace_back([&, i] {
            std::mt19937 random(std::random_device{}() + static_cast<unsigned>(i));
            while (!isOver) {
                MisbehaveOnce(folder + "/control", random);
            }
        });
    }
    std::mt19937 random(std::random_device{}());
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    std::size_t answered = 0;
    bool isGood = true;
    while (isGood && std::chrono::steady_clock::now() < end) {
        const std::string command = OneLine(Fuzz::Mutate(kCommands[answered % kCommands.size()], random));
        isGood = IsAnswered(folder + "/control", command);
        ++answered;
        if (!isGood) {
            std::cerr << "no good answer to " << command << '\n';
        }
    }
    isOver = true;
    for (std::thread& thread : hostile) {
        thread.join();
    }
    server.reset();
    std::filesystem::remove_all(folder);
    std::cout << answered << " commands answered\n";
    return isGood ? 0 : 1;
}
