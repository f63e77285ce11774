// "start_stop COUNT [SEED]", inside the sandbox: COUNT starts of the service under request load that a signal
// stops in the main loop and, beside them, a quarter as many that it stops earlier. Prints how often each end
// was seen; status 1 when one was not as promised.

#include <unistd.h>

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <string>
#include <thread>

#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {
namespace {

/// A client that asks one thing after the other from the moment the port is open.
class Load {
  public:
    Load() : m_thread([this] { Run(); }) {}
    ~Load() {
        m_isStopping = true;
        m_thread.join();
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

  private:
    void Run() {
        while (!m_isStopping) {
            try {
                Client client;
                for (int i = 0; !m_isStopping; ++i)
                    client.Call(kMethods[static_cast<std::size_t>(i) % std::size(kMethods)]);
            } catch (const std::exception&) {
                // No port yet, or none any more.
                std::this_thread::sleep_for(milliseconds{1});
            }
        }
    }

    static constexpr const char* kMethods[] = {
        "isIpodConnected", "getCurrentTrackInfo", "playPause", "getBrowseList", "start", "next", "stop",
        "getSongList",     "resetBrowseList"};
    std::atomic<bool> m_isStopping{false};
    std::thread m_thread;
};

std::string Describe(std::optional<int> status) {
    return status ? "status " + std::to_string(*status) : "no end";
}

/// Whether the process has a handler for the signal in place.
bool Catches(const ServiceProcess& service, int number) {
    std::ifstream file(service.Proc() + "/status");
    for (std::string word; file >> word;) {
        if (word == "SigCgt:" && file >> word)
            return (std::stoull(word, nullptr, 16) >> (number - 1) & 1) != 0;
    }
    return false;
}

enum class End { kExited, kWaitsForSecondSignal, kUndecided };

// A quit wakes the main loop before the server thread is told to stop. So a main thread that sleeps in its
// loop although the server has stopped sleeps on until another signal comes.
End WaitForEndOrSecondSignal(ServiceProcess& service) {
    End end = End::kUndecided;
    WaitUntil([&] {
        if (service.HasLogged("Stop JSON-RPC TCP server\n") && service.IsInMainLoop())
            end = End::kWaitsForSecondSignal;
        else if (service.Status())
            end = End::kExited;
        return end != End::kUndecided;
    });
    return end;
}

/// Counts how often it ended in which way.
class StartStop {
  public:
    explicit StartStop(unsigned seed) : m_random(seed) {}

    /// The signal comes at or after the main loop's start: one is enough, and the status is 0.
    void RunAndStopInMainLoop();
    /// The signal comes at any moment before that: the status is 143 while no handler is in place. Once one
    /// is, the service either still stops in order or keeps waiting for a second signal, and then ends
    /// with 1.
    void RunAndStopEarly();
    /// The same, from the moment on in which the handler is in place.
    void RunAndStopOnceHandled();

    const std::map<std::string, int>& Outcomes() const { return m_outcomes; }
    /// Ends that must not be.
    int Failures() const { return m_failures; }

  private:
    void StopEarly(ServiceProcess& service, const std::string& situation);
    void Count(const std::string& situation, const std::string& outcome, bool isPromised);
    /// Up to `longest`, as many short ones as long ones: right behind a start there is most to go wrong.
    std::chrono::microseconds RandomDelay(std::chrono::microseconds longest);

    std::mt19937 m_random;
    Clock::duration m_timeToMainLoop = milliseconds{50};
    std::map<std::string, int> m_outcomes;
    int m_failures = 0;
};

void StartStop::RunAndStopInMainLoop() {
    unlink(kLogPath);
    const Clock::time_point start = Clock::now();
    ServiceProcess service({.device = "iap"});
    const Load loadOne;
    const Load loadTwo;
    service.WaitForMainLoop();
    m_timeToMainLoop = Clock::now() - start;
    std::this_thread::sleep_for(RandomDelay(milliseconds{500}));
    const std::optional<int> status = service.Stop();
    const bool isOrderly = service.HasLogged("Exiting applet status: 0\n");
    Count("in the main loop", Describe(status) + (isOrderly ? "" : ", not in order"),
          status == 0 && isOrderly);
    if (status != 0 || !isOrderly)
        std::cout << ReadFile(kLogPath) << std::endl;
}

void StartStop::RunAndStopEarly() {
    unlink(kLogPath);
    ServiceProcess service({.device = "iap"});
    const Load load;
    std::this_thread::sleep_for(m_timeToMainLoop *
                                std::uniform_real_distribution<double>(0.0, 1.0)(m_random));
    StopEarly(service, "earlier");
}

void StartStop::RunAndStopOnceHandled() {
    unlink(kLogPath);
    ServiceProcess service({.device = "iap"});
    const Load load;
    const Clock::time_point deadline = In(kPatience);
    while (!Catches(service, SIGTERM) && Clock::now() < deadline) {
    }
    std::this_thread::sleep_for(
        RandomDelay(std::chrono::ceil<std::chrono::microseconds>(m_timeToMainLoop / 2)));
    StopEarly(service, "behind the handler");
}

void StartStop::StopEarly(ServiceProcess& service, const std::string& situation) {
    const bool isHandled = Catches(service, SIGTERM);
    service.Signal(SIGTERM);
    const End end = WaitForEndOrSecondSignal(service);
    if (end == End::kExited) {
        const std::optional<int> status = service.WaitForExit();
        Count(situation, Describe(status), status == 0 || (status == 143 && !isHandled));
    } else if (end == End::kWaitsForSecondSignal) {
        const std::optional<int> status = service.Stop();
        Count(situation, "second signal, " + Describe(status), status == 1);
    } else {
        Count(situation, service.HasLogged("Exit signal caught") ? "hang" : "signal lost", false);
    }
}

void StartStop::Count(const std::string& situation, const std::string& outcome, bool isPromised) {
    ++m_outcomes[situation + ": " + outcome + (isPromised ? "" : " (BROKEN PROMISE)")];
    m_failures += isPromised ? 0 : 1;
}

std::chrono::microseconds StartStop::RandomDelay(std::chrono::microseconds longest) {
    const double exponent =
        std::uniform_real_distribution<double>(0.0, std::log(static_cast<double>(longest.count())))(m_random);
    return std::chrono::microseconds(static_cast<int>(std::exp(exponent)));
}

void Print(const StartStop& runs) {
    for (const auto& [outcome, count] : runs.Outcomes())
        std::cout << count << "\t" << outcome << std::endl;
}

int Run(int count, unsigned seed) {
    std::cout << "seed " << seed << std::endl;
    StartStop runs(seed);
    for (int i = 1; i <= count; ++i) {
        runs.RunAndStopInMainLoop();
        if (i % 8 == 0)
            runs.RunAndStopEarly();
        if (i % 8 == 4)
            runs.RunAndStopOnceHandled();
        if (i % 100 == 0)
            std::cout << i << " of " << count << ", broken promises: " << runs.Failures() << std::endl;
    }
    Print(runs);
    return runs.Failures() == 0 ? 0 : 1;
}

}  // namespace
}  // namespace EndToEnd

int main(int argc, char** argv) {
    if (std::getenv("IPOD_TEST_SANDBOX") == nullptr || argc < 2) {
        std::cerr << "usage, through sandbox.sh: start_stop COUNT [SEED]\n";
        return 2;
    }
    try {
        const unsigned seed = argc > 2 ? static_cast<unsigned>(std::atol(argv[2])) : std::random_device{}();
        return EndToEnd::Run(std::atoi(argv[1]), seed);
    } catch (const std::exception& error) {
        std::cerr << error.what() << std::endl;
        return 1;
    }
}
