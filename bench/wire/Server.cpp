#include "bench/wire/Server.h"

#include <arpa/inet.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>

#include "bench/wire/Connection.h"
#include "bench/wire/Protocol.h"

namespace Bench {
namespace {

using std::chrono::milliseconds;

sockaddr_in Loopback(std::uint16_t port, unsigned number) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK + number);
    return address;
}

std::string Text(const sockaddr_in& address) {
    char text[INET_ADDRSTRLEN]{};
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return text;
}

/// The client spins on the first core; what it measures runs on the last one, be it the floor or the service.
void RunOnLastCore() {
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(static_cast<unsigned>(sysconf(_SC_NPROCESSORS_ONLN)) - 1, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}

[[noreturn]] void Execute(const std::vector<std::string>& command, const Environment& environment) {
    RunOnLastCore();
    for (const auto& [name, value] : environment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    std::vector<char*> words;
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    execv(words[0], words.data());
    _exit(127);
}

void AwaitPort(const sockaddr_in& address) {
    for (const auto end = Clock::now() + std::chrono::seconds(10);;) {
        try {
            Connection(address).Ask(kRequest);
            return;
        } catch (const std::system_error&) {
            if (Clock::now() > end) {
                throw;
            }
        }
        std::this_thread::sleep_for(milliseconds(5));
    }
}

}  // namespace

Server::Server(std::string name, const sockaddr_in& address, const std::vector<std::string>& command,
               const Environment& environment)
    : m_name(std::move(name)), m_address(address), m_pid(fork()) {
    if (m_pid == 0) {
        Execute(command, environment);
    }
}

Server Server::Floor() {
    Server floor("floor", Loopback(kFloorPort, 0), {FLOOR_PROGRAM}, {});
    AwaitPort(floor.m_address);
    return floor;
}

Server Server::Service(const std::string& path, unsigned number, const Environment& environment) {
    const sockaddr_in address = Loopback(kServicePort, number);
    Environment whole{{"LD_LIBRARY_PATH", QUICK_PLAYER_FOLDER}};
    whole.insert(whole.end(), environment.begin(), environment.end());
    Server service(path, address, {path, "-a", Text(address)}, whole);
    AwaitPort(address);
    return service;
}

Server::~Server() {
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
}

double Server::CpuMicroseconds() const {
    clockid_t clock{};
    timespec time{};
    if (clock_getcpuclockid(m_pid, &clock) != 0 || clock_gettime(clock, &time) != 0) {
        throw std::runtime_error("the server's processor time cannot be read");
    }
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

void Server::AwaitPlayer() const {
    const Connection client(m_address);
    for (std::string reply; reply.find(kReply) == std::string::npos;) {
        std::this_thread::sleep_for(milliseconds(5));
        reply.clear();
        client.Send(kRequest);
        client.Await(1, &reply);
    }
    constexpr milliseconds kQuiet(1500);  // more than a pass at rest takes
    for (auto heard = Clock::now(); Clock::now() - heard < kQuiet;) {
        std::this_thread::sleep_for(milliseconds(10));
        heard = client.Receive() > 0 ? Clock::now() : heard;
    }
}

}  // namespace Bench
