#include "bench/wire/Server.h"

#include <arpa/inet.h>
#include <sched.h>
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
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
    if (std::freopen("/dev/null", "w", stdout) == nullptr) {
        _exit(127);
    }
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

std::vector<std::string> CommandLine(const Program& program, const sockaddr_in& address) {
    if (program.IsFloor()) {
        return {FLOOR_PROGRAM, Text(address)};
    }
    return {program.Path(), "-a", Text(address)};
}

/// Tries without a pause: a start is told to some microseconds.
void AwaitReply(pid_t server, const sockaddr_in& address) {
    for (SpinLimit limit;;) {
        try {
            Connection(address).Ask(kRequest);
            return;
        } catch (const std::system_error&) {
            if (waitpid(server, nullptr, WNOHANG) != 0) {
                throw std::runtime_error("it does not run, or has ended; in the sandbox paths are absolute");
            }
            limit.Spin();
        }
    }
}

}  // namespace

Server::Server(const Program& program, unsigned number, const Environment& environment)
    : m_address(Loopback(program.IsFloor() ? kFloorPort : kServicePort, number)) {
    Environment whole{{"LD_LIBRARY_PATH", QUICK_PLAYER_FOLDER}};
    whole.insert(whole.end(), environment.begin(), environment.end());
    const auto start = Clock::now();
    m_pid = fork();
    if (m_pid == 0) {
        Execute(CommandLine(program, m_address), whole);
    }
    AwaitReply(m_pid, m_address);
    m_startMilliseconds = Microseconds(Clock::now() - start).count() / 1000;
}

Server::~Server() {
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
}

double Server::StopMilliseconds() {
    const auto start = Clock::now();
    kill(m_pid, SIGTERM);
    waitpid(std::exchange(m_pid, -1), nullptr, 0);
    return Microseconds(Clock::now() - start).count() / 1000;
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
}

void Server::AwaitRest() const {
    constexpr milliseconds kQuiet(1500);
    const Connection client(m_address);
    for (auto heard = Clock::now(); Clock::now() - heard < kQuiet;) {
        std::this_thread::sleep_for(milliseconds(10));
        heard = client.Receive() > 0 ? Clock::now() : heard;
    }
}

}  // namespace Bench
