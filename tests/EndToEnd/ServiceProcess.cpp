#include "tests/EndToEnd/ServiceProcess.h"

#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <regex>
#include <sstream>
#include <system_error>

namespace EndToEnd {

namespace {

constexpr const char* kStandardError = "/tmp/service.stderr";

/// A shell sets up the standard streams and becomes the service.
pid_t Spawn(const std::string& program, std::vector<std::string> arguments) {
    const std::string script = std::string("exec \"$0\" \"$@\" </dev/null >") +
                               ServiceProcess::kStandardOutput + " 2>" + kStandardError;
    arguments.insert(arguments.begin(), {"/bin/sh", "-c", script, program});
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, pointers.front(), nullptr, nullptr, pointers.data(), environ);
    if (error != 0)
        throw std::system_error(error, std::generic_category(), "start the service");
    return pid;
}

constexpr long kPolls[] = {
    SYS_ppoll,
    SYS_restart_syscall,  // one that has been stopped meanwhile, as by a machine that is paused
#ifdef SYS_poll
    SYS_poll,
#endif
#ifdef SYS_ppoll_time64
    SYS_ppoll_time64,
#endif
};

}  // namespace

const std::string kServiceProgram = IPOD_SERVICE;
const std::string kPictureModule = PICTURE_MODULE;

std::string ReadFile(const std::string& path) {
    // Through a stream, which takes it as the end when a process in /proc ends under the reader.
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

std::vector<LogEntry> ParseLog(const std::string& text) {
    static const std::regex head(
        "\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\]"
        "\\[(TRACE|INFO |DEBUG|WARN |ERROR|FATAL)\\]\\[([^\\]:\\[]+:\\d+)\\]\\n\\t");
    std::vector<LogEntry> entries;
    std::size_t end = 0;
    for (std::sregex_iterator match(text.begin(), text.end(), head); match != std::sregex_iterator();
         ++match) {
        if (!entries.empty())
            entries.back().message = match->prefix();
        entries.push_back({(*match)[1], (*match)[2], {}});
        end = static_cast<std::size_t>(match->position() + match->length());
    }
    if (!entries.empty())
        entries.back().message = text.substr(end);
    return entries;
}

std::ptrdiff_t CountEntries(const std::string& log, const std::string& level, const std::string& message) {
    const std::vector<LogEntry> entries = ParseLog(log);
    return std::count_if(entries.begin(), entries.end(), [&](const LogEntry& entry) {
        return entry.level == level && entry.message == message;
    });
}

ServiceProcess::ServiceProcess(ServiceOptions options) : m_options(std::move(options)) {
    unlink(kControlSocket);
    setenv("DEVICE_SIMULATOR_CONTROL", kControlSocket, 1);
    setenv("DEVICE_SIMULATOR_DEVICE", m_options.device.c_str(), 1);
    m_pid = Spawn(m_options.program.empty() ? kServiceProgram : m_options.program, m_options.arguments);
}

ServiceProcess::~ServiceProcess() {
    if (!Status()) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    const std::string errors = ReadFile(kStandardError);
    for (const char* sign : {"Sanitizer:", "runtime error:"}) {
        if (errors.find(sign) != std::string::npos) {
            std::cerr << errors << std::endl;
            std::abort();
        }
    }
}

Client ServiceProcess::WaitForPort() {
    return Client::Await(m_options.address, [this] {
        if (Status())
            throw std::runtime_error("the service has ended: " + ReadFile(kStandardError));
    });
}

void ServiceProcess::WaitForMainLoop() {
    // The first start of all scans the plugins, and waits for that in its own ways.
    const char* registry = std::getenv("GST_REGISTRY");
    Require("the service's main loop", [&] {
        const bool isScanned = registry == nullptr || std::filesystem::exists(registry);
        return (isScanned && IsInMainLoop()) || Status();
    });
}

// /proc tells which system call a thread sleeps in, and with which arguments; "running" for one that is about
// to go on. An idle main loop polls one descriptor, its own wake-up; nothing before it does.
bool ServiceProcess::IsInMainLoop() const {
    std::ifstream file(Proc() + "/task/" + std::to_string(m_pid) + "/syscall");
    long call = -1;
    unsigned long descriptors = 0;
    unsigned long count = 0;
    return file >> call >> std::hex >> descriptors >> count && count == 1 &&
           std::find(std::begin(kPolls), std::end(kPolls), call) != std::end(kPolls);
}

std::optional<int> ServiceProcess::Status() {
    int status = 0;
    if (!m_status && waitpid(m_pid, &status, WNOHANG) == m_pid)
        m_status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    return m_status;
}

std::optional<int> ServiceProcess::WaitForExit() {
    WaitUntil([&] { return Status().has_value(); });
    return m_status;
}

std::optional<int> ServiceProcess::Stop() {
    Signal(SIGTERM);
    return WaitForExit();
}

void ServiceProcess::WaitForLog(const std::string& text) const {
    Require("'" + text + "' in the log", [&] { return HasLogged(text); });
}

std::size_t ServiceProcess::DescriptorCount() const {
    const std::filesystem::directory_iterator descriptors(Proc() + "/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

}  // namespace EndToEnd
