#include "tests/EndToEnd/StartStop.h"

#include <unistd.h>

#include <cmath>
#include <csignal>
#include <iostream>
#include <thread>

#include "tests/EndToEnd/LogFile.h"
#include "tests/EndToEnd/RpcClient.h"
#include "tests/EndToEnd/ServiceProcess.h"

namespace EndToEnd {

namespace {

constexpr const char* kLogPath = "/home/root/ipod.log";

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
                RpcClient client;
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

enum class End { kExited, kWaitsForSecondSignal, kUndecided };

// A quit wakes the main loop before the server thread is told to stop. So a main thread that sleeps in its
// loop although the server has stopped sleeps on until another signal comes.
End WaitForEndOrSecondSignal(ServiceProcess& service, const LogFile& log) {
    End end = End::kUndecided;
    WaitUntil([&] {
        if (log.Contains("Stop JSON-RPC TCP server\n") && service.IsInMainLoop())
            end = End::kWaitsForSecondSignal;
        else if (!service.IsRunning())
            end = End::kExited;
        return end != End::kUndecided;
    });
    return end;
}

}  // namespace

void StartStop::RunAndStopInMainLoop() {
    unlink(kLogPath);
    const Clock::time_point start = Clock::now();
    ServiceProcess service({.device = "iap"});
    const Load loadOne;
    const Load loadTwo;
    service.WaitForMainLoop();
    m_timeToMainLoop = Clock::now() - start;
    std::this_thread::sleep_for(RandomDelay(milliseconds{500}));
    service.Signal(SIGTERM);
    const std::optional<int> status = service.WaitForExit();
    const bool isOrderly = LogFile(kLogPath).Contains("Exiting applet status: 0\n");
    Count("in the main loop", Describe(status) + (isOrderly ? "" : ", not in order"),
          status == 0 && isOrderly);
    if (status != 0 || !isOrderly)
        std::cout << service.StandardError() << LogFile(kLogPath).Text() << std::endl;
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
    while (!service.Catches(SIGTERM) && Clock::now() < deadline) {
    }
    std::this_thread::sleep_for(
        RandomDelay(std::chrono::ceil<std::chrono::microseconds>(m_timeToMainLoop / 2)));
    StopEarly(service, "behind the handler");
}

void StartStop::StopEarly(ServiceProcess& service, const std::string& situation) {
    const LogFile log(kLogPath);
    const bool isHandled = service.Catches(SIGTERM);
    service.Signal(SIGTERM);
    const End end = WaitForEndOrSecondSignal(service, log);
    if (end == End::kExited) {
        const std::optional<int> status = service.WaitForExit();
        Count(situation, Describe(status), status == 0 || (status == 143 && !isHandled));
    } else if (end == End::kWaitsForSecondSignal) {
        service.Signal(SIGTERM);
        const std::optional<int> status = service.WaitForExit();
        Count(situation, "second signal, " + Describe(status), status == 1);
    } else {
        Count(situation, log.Contains("Exit signal caught") ? "hang" : "signal lost", false);
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

}  // namespace EndToEnd
