#include "tests/EndToEnd/ServiceProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#include "tests/EndToEnd/LogFile.h"

namespace EndToEnd {

namespace {

constexpr const char* kStandardOutput = "/tmp/service.stdout";
constexpr const char* kStandardError = "/tmp/service.stderr";

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

pid_t Spawn(std::vector<std::string> arguments, std::vector<std::string> environment) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, kStandardOutput, kFlags, 0644);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, kStandardError, kFlags, 0644);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, arguments.front().c_str(), &actions, nullptr,
                                  Pointers(arguments).data(), Pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "start " + arguments.front());
    return pid;
}

// The second signal ends the process at once, without a join: no leak of a thread, for ThreadSanitizer.
std::string ThreadSanitizerOptions() {
    const char* options = std::getenv("TSAN_OPTIONS");
    return "TSAN_OPTIONS=" + std::string(options == nullptr ? "" : options) + ":report_thread_leaks=0";
}

std::vector<std::string> Environment(const ServiceOptions& options) {
    const std::string_view replaced[] = {"DEVICE_SIMULATOR_", "TSAN_OPTIONS="};
    std::vector<std::string> environment{"DEVICE_SIMULATOR_DEVICE=" + options.device,
                                         "DEVICE_SIMULATOR_CONTROL=" + std::string(kControlSocket),
                                         ThreadSanitizerOptions()};
    for (char** entry = environ; *entry != nullptr; ++entry)
        if (std::none_of(std::begin(replaced), std::end(replaced),
                         [&](std::string_view start) { return std::string_view(*entry).starts_with(start); }))
            environment.emplace_back(*entry);
    return environment;
}

bool IsPoll(long call) {
#ifdef SYS_poll
    if (call == SYS_poll)
        return true;
#endif
#ifdef SYS_ppoll_time64
    if (call == SYS_ppoll_time64)
        return true;
#endif
    return call == SYS_ppoll;
}

}  // namespace

ServiceProcess::ServiceProcess(ServiceOptions options) : m_options(std::move(options)) {
    unlink(kControlSocket);
    std::vector<std::string> arguments{IPOD_SERVICE};
    arguments.insert(arguments.end(), m_options.arguments.begin(), m_options.arguments.end());
    m_pid = Spawn(std::move(arguments), Environment(m_options));
    m_pidFd = UniqueFd(static_cast<int>(syscall(SYS_pidfd_open, m_pid, 0)));
}

ServiceProcess::~ServiceProcess() {
    if (m_status)
        return;
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
}

void ServiceProcess::WaitForPort() {
    Require("the service's port", [&] {
        if (!IsRunning())
            throw std::runtime_error("the service has ended: " + StandardError());
        try {
            LineSocket::ConnectTcp(m_options.address);
            return true;
        } catch (const std::system_error&) {
            return false;
        }
    });
}

void ServiceProcess::WaitForMainLoop() {
    // The first start of all scans the plugins, and waits for that in its own ways.
    const char* registry = std::getenv("GST_REGISTRY");
    Require("the service's main loop", [&] {
        const bool isScanned = registry == nullptr || std::filesystem::exists(registry);
        return (isScanned && IsInMainLoop()) || !IsRunning();
    });
}

// /proc tells which system call a thread sleeps in, and with which arguments; "running" for one that is about
// to go on. An idle main loop polls one descriptor, its own wake-up; nothing before it does.
bool ServiceProcess::IsInMainLoop() const {
    std::ifstream file("/proc/" + std::to_string(m_pid) + "/task/" + std::to_string(m_pid) + "/syscall");
    long call = -1;
    unsigned long descriptors = 0;
    unsigned long count = 0;
    return file >> call >> std::hex >> descriptors >> count && IsPoll(call) && count == 1;
}

bool ServiceProcess::Catches(int number) const {
    std::ifstream file("/proc/" + std::to_string(m_pid) + "/status");
    for (std::string word; file >> word;) {
        if (word == "SigCgt:" && file >> word)
            return (std::stoull(word, nullptr, 16) >> (number - 1) & 1) != 0;
    }
    return false;
}

void ServiceProcess::Signal(int number) {
    kill(m_pid, number);
}

std::optional<int> ServiceProcess::WaitForExit(milliseconds patience) {
    if (m_status || !WaitForFd(m_pidFd.Get(), POLLIN, In(patience)))
        return m_status;
    int status = 0;
    if (waitpid(m_pid, &status, 0) == m_pid)
        m_status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return m_status;
}

std::size_t ServiceProcess::DescriptorCount() const {
    const std::filesystem::directory_iterator descriptors("/proc/" + std::to_string(m_pid) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

std::string ServiceProcess::StandardOutput() const {
    return ReadFile(kStandardOutput);
}

std::string ServiceProcess::StandardError() const {
    return ReadFile(kStandardError);
}

}  // namespace EndToEnd
