#include "ServiceUtil/SignalHandler.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include "ServiceUtil/ISignalListener.h"
#include "ServiceUtil/Logger.h"

// Read by the thread sanitizer's run time, when there is one: it would spend a second on each exit below.
extern "C" const char* __tsan_default_options() {
    return "atexit_sleep_ms=0";
}

namespace {

constexpr int kExitAsPlanned = 3;  // unlike any that a sanitizer ends with

class Listener : public ISignalListener {
  public:
    explicit Listener(std::function<void(int)> onSignal) : m_onSignal(std::move(onSignal)) {}
    void OnSignal(int signalNumber) override { m_onSignal(signalNumber); }

  private:
    std::function<void(int)> m_onSignal;
};

/// Lets threads meet at other points from run to run.
void Dawdle(int turns) {
    for (int i = 0; i < turns; ++i) {
        std::this_thread::yield();
    }
}

/// For a process of its own: a listener calls exit() while three threads log and main unregisters it, as it
/// must before it returns: exit() from two threads at once is beyond the C library.
[[noreturn]] void ExitFromListener(int turns) {
    alarm(50);  // a hang ends with SIGALRM
    CLogger::Instance().Open("/dev/null");
    std::fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);  // where the test sees what spills
    for (int i = 0; i < 3; ++i) {
        std::thread([] {
            for (;;) {
                LOG_INFO("still here\n");
            }
        }).detach();
    }
    std::atomic<bool> inside{false};
    Listener listener([&](int) {
        inside = true;
        inside.notify_all();
        Dawdle(turns % 5 * 10);
        std::exit(kExitAsPlanned);
    });
    CSignalHandler::Instance().Register(&listener);
    kill(getpid(), SIGTERM);
    inside.wait(false);
    Dawdle(turns);
    CSignalHandler::Instance().Unregister(&listener);
    _exit(99);  // it must not come back from a listener that never does
}

TEST(SignalHandlerDeathTest, ExitFromAListenerEndsWhateverMainIsDoing) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (int turns = 0; turns < 40; turns += 2) {
        EXPECT_EXIT(ExitFromListener(turns), testing::ExitedWithCode(kExitAsPlanned), testing::Eq(""));
    }
}

/// For a process of its own: exit() while late signals find no listener any more.
[[noreturn]] void ExitBehindSignals() {
    alarm(50);
    std::atexit([] {  // runs after the handler's own end
        const bool areDefault = signal(SIGTERM, SIG_IGN) == SIG_DFL && signal(SIGINT, SIG_IGN) == SIG_DFL;
        _exit(areDefault ? kExitAsPlanned : 99);
    });
    CSignalHandler::Instance();
    for (int i = 0; i < 1000; ++i) {
        raise(SIGTERM);
    }
    std::exit(0);
}

TEST(SignalHandlerDeathTest, ExitWaitsForLateSignalsAndBringsTheDefaultActionsBack) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(ExitBehindSignals(), testing::ExitedWithCode(kExitAsPlanned), "");
}

TEST(SignalHandlerTest, CallsListenersInOrderOfTheirLastRegistration) {
    CSignalHandler& handler = CSignalHandler::Instance();
    std::vector<int> calls;
    Listener later([&calls](int number) { calls.push_back(number); });
    Listener first([&](int number) {
        calls.push_back(100 + number);
        if (number == 8) {
            handler.Unregister(&later);
            handler.Unregister(&first);
        }
    });
    for (Listener* listener : {&later, &first, static_cast<Listener*>(nullptr), &later}) {
        handler.Register(listener);
    }
    for (const int number : {7, 8, 9}) {
        handler.Notify(number);
    }
    EXPECT_EQ(calls, (std::vector<int>{107, 7, 108}));
}

TEST(SignalHandlerTest, NextSignalIsToldBesideAListenerThatHangsButNotSooner) {
    using Clock = std::chrono::steady_clock;
    Clock::time_point begin;
    std::atomic<int> calls{0};
    const auto awaitCalls = [&calls](int count) {
        for (int now = calls; now < count; now = calls) {
            calls.wait(now);
        }
    };
    Listener listener([&](int number) {
        if (number == SIGTERM) {
            begin = Clock::now();
            ++calls;
            calls.notify_all();
            awaitCalls(2);
            return;
        }
        EXPECT_GE(Clock::now() - begin, CSignalHandler::kPatience);
        ++calls;
        calls.notify_all();
    });
    CSignalHandler::Instance().Register(&listener);
    kill(getpid(), SIGTERM);
    awaitCalls(1);
    kill(getpid(), SIGINT);
    awaitCalls(2);
    CSignalHandler::Instance().Unregister(&listener);
}

TEST(SignalHandlerTest, SignalsPouringInReachNoListenerThatIsGone) {
    CSignalHandler& handler = CSignalHandler::Instance();
    const auto start = std::chrono::steady_clock::now();
    std::atomic<bool> done{false};
    std::thread sender([&done] {
        while (!done) {
            kill(getpid(), SIGTERM);
            kill(getpid(), SIGINT);
        }
    });
    // They outlive the storm, so that a call of one that is gone is seen, not undefined.
    std::array<std::atomic<bool>, 300> gone{};
    std::deque<Listener> listeners;
    std::atomic<int> calls{0};
    for (std::size_t i = 0; i < gone.size(); ++i) {
        const int before = calls;
        handler.Register(&listeners.emplace_back([&, i](int) {
            Dawdle(static_cast<int>(i % 10));
            EXPECT_FALSE(gone.at(i));
            ++calls;
            calls.notify_all();
        }));
        calls.wait(i % 3 == 0 ? before : -1);  // every third has been called, others may be about to be
        handler.Unregister(&listeners.back());
        gone.at(i) = true;
    }
    done = true;
    sender.join();
    // A hundred signals were awaited; none had to wait for the one before.
    EXPECT_LT(std::chrono::steady_clock::now() - start, 50 * CSignalHandler::kPatience);
}

}  // namespace
