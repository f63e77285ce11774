// A small process for the signal handler's tests to signal: "signal_scenario NAME". It prints "ready\n" once
// its listener is registered. Statuses 90 and above are broken promises.

#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "ServiceUtil/ISignalListener.h"
#include "ServiceUtil/Logger.h"
#include "ServiceUtil/SignalHandler.h"

// Read by the sanitizers' run time, when there is one: their findings must not look like the status 1 that a
// second signal ends with.
extern "C" const char* __asan_default_options() {
    return "exitcode=77";
}
extern "C" const char* __ubsan_default_options() {
    return "exitcode=77";
}
extern "C" const char* __tsan_default_options() {
    return "exitcode=77 atexit_sleep_ms=0";
}

namespace {

constexpr int kCalledAfterUnregister = 98;
constexpr int kUnregisterDidNotWait = 99;

class Listener : public ISignalListener {
  public:
    explicit Listener(std::function<void(int)> onSignal) : m_onSignal(std::move(onSignal)) {}
    void OnSignal(int signalNumber) override {
        if (m_gone) {
            _exit(kCalledAfterUnregister);
        }
        m_onSignal(signalNumber);
        ++m_calls;
        m_calls.notify_all();
    }
    void WaitForCall() const { m_calls.wait(0); }

    std::atomic<bool> m_gone{false};
    std::atomic<int> m_calls{0};

  private:
    std::function<void(int)> m_onSignal;
};

void SayReady() {
    [[maybe_unused]] const ssize_t written = write(STDOUT_FILENO, "ready\n", 6);
}

void Pause() {
    std::random_device random;
    usleep(static_cast<useconds_t>(random() % 1000));
}

/// The first signal lets main go on, any later one exits with status 1.
struct FirstOrderlyThenExit {
    void operator()(int signalNumber) {
        LOG_WARN("signal %d\n", signalNumber);
        if (seen.exchange(true)) {
            std::exit(1);
        }
    }
    std::atomic<bool>& seen;
};

int Orderly() {
    std::atomic<bool> seen{false};
    Listener listener(FirstOrderlyThenExit{seen});
    CSignalHandler::Instance().Register(&listener);
    SayReady();
    listener.WaitForCall();
    CSignalHandler::Instance().Unregister(&listener);
    listener.m_gone = true;
    return 0;
}

int Stuck() {
    std::atomic<bool> seen{false};
    Listener listener(FirstOrderlyThenExit{seen});
    CSignalHandler::Instance().Register(&listener);
    SayReady();
    for (;;) {
        pause();
    }
}

int ExitWhileUnregistering() {
    std::atomic<bool> inside{false};
    Listener listener([&](int) {
        inside = true;
        inside.notify_all();
        Pause();
        std::exit(1);
    });
    CSignalHandler::Instance().Register(&listener);
    SayReady();
    inside.wait(false);
    Pause();
    CSignalHandler::Instance().Unregister(&listener);
    return kUnregisterDidNotWait;
}

int ExitWhileReturning() {
    static std::atomic<bool> inside{false};
    static Listener* const listener = new Listener([](int) {
        inside = true;
        inside.notify_all();
        Pause();
        std::exit(1);
    });
    CSignalHandler::Instance().Register(listener);
    SayReady();
    inside.wait(false);
    Pause();
    return 0;
}

int ExitWhileLogging() {
    CLogger::Instance().Open("/dev/null");
    for (int i = 0; i < 3; ++i) {
        std::thread([] {
            for (;;) {
                LOG_INFO("still here\n");
            }
        }).detach();
    }
    return ExitWhileUnregistering();
}

/// Listeners come and go while signals pour in; none may be called once it is gone.
int Storm() {
    CSignalHandler& handler = CSignalHandler::Instance();
    SayReady();
    std::atomic<bool> done{false};
    std::thread sender([&done] {
        while (!done) {
            kill(getpid(), SIGTERM);
            kill(getpid(), SIGINT);
        }
    });
    for (int i = 0; i < 300; ++i) {
        Listener listener([](int) {});
        handler.Register(&listener);
        if (i % 3 == 0) {
            listener.WaitForCall();
        }
        handler.Unregister(&listener);
        listener.m_gone = true;
    }
    done = true;
    sender.join();
    return 0;
}

int NoListener() {
    CSignalHandler::Instance();
    raise(SIGTERM);
    raise(SIGINT);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    alarm(50);  // a hang ends with SIGALRM
    const std::map<std::string, int (*)()> scenarios{
        {"orderly", Orderly},
        {"stuck", Stuck},
        {"exit-while-unregistering", ExitWhileUnregistering},
        {"exit-while-returning", ExitWhileReturning},
        {"exit-while-logging", ExitWhileLogging},
        {"storm", Storm},
        {"no-listener", NoListener},
    };
    CLogger::Instance().Open("/dev/null");
    return scenarios.at(argc > 1 ? argv[1] : "")();
}
