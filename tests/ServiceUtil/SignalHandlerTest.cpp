#include "ServiceUtil/SignalHandler.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <functional>
#include <thread>
#include <utility>
#include <vector>

#include "ServiceUtil/ISignalListener.h"

namespace {

class Listener : public ISignalListener {
  public:
    explicit Listener(std::function<void(int)> onSignal) : m_onSignal(std::move(onSignal)) {}
    void OnSignal(int signalNumber) override { m_onSignal(signalNumber); }

  private:
    std::function<void(int)> m_onSignal;
};

TEST(SignalHandler, CallsListenersInOrderOfTheirLastRegistration) {
    CSignalHandler& handler = CSignalHandler::Instance();
    std::vector<int> calls;
    Listener a([&calls](int number) { calls.push_back(number); });
    Listener b([&calls](int number) { calls.push_back(100 + number); });
    handler.Register(&a);
    handler.Register(&b);
    handler.Register(nullptr);
    handler.Register(&a);
    handler.Notify(7);
    EXPECT_EQ(calls, (std::vector<int>{107, 7}));

    handler.Unregister(&b);
    handler.Unregister(&b);
    handler.Notify(8);
    EXPECT_EQ(calls, (std::vector<int>{107, 7, 8}));
    handler.Unregister(&a);
    handler.Unregister(nullptr);
}

TEST(SignalHandler, ListenerMayUnregisterItselfAndOthersWhileCalled) {
    CSignalHandler& handler = CSignalHandler::Instance();
    int calls = 0;
    Listener later([&calls](int) { ++calls; });
    Listener first([&](int) {
        ++calls;
        handler.Unregister(&later);
        handler.Unregister(&first);
    });
    handler.Register(&first);
    handler.Register(&later);
    handler.Notify(SIGTERM);
    handler.Notify(SIGTERM);
    EXPECT_EQ(calls, 1);
}

TEST(SignalHandler, UnregisterWaitsForACallUnderWay) {
    CSignalHandler& handler = CSignalHandler::Instance();
    std::atomic<bool> inside{false};
    std::atomic<bool> letGo{false};
    std::atomic<bool> returned{false};
    Listener listener([&](int) {
        inside = true;
        inside.notify_all();
        letGo.wait(false);
        returned = true;
    });
    handler.Register(&listener);
    raise(SIGINT);
    inside.wait(false);
    std::thread release([&] {
        usleep(20000);
        letGo = true;
        letGo.notify_all();
    });
    handler.Unregister(&listener);
    EXPECT_TRUE(returned);
    release.join();
}

/// Starts the scenario and waits until its listener is registered; -1 on failure.
pid_t Start(const char* scenario, int& output) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        return -1;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    std::array<char*, 3> arguments{const_cast<char*>(SIGNAL_SCENARIO), const_cast<char*>(scenario), nullptr};
    pid_t pid = -1;
    if (posix_spawn(&pid, SIGNAL_SCENARIO, &actions, nullptr, arguments.data(), environ) != 0) {
        pid = -1;
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    std::array<char, 6> ready{};
    [[maybe_unused]] const ssize_t count = read(ends[0], ready.data(), ready.size());
    output = ends[0];
    return pid;
}

int StatusOf(pid_t pid, int output) {
    int status = 0;
    waitpid(pid, &status, 0);
    close(output);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

int RunWithOneSignal(const char* scenario) {
    int output = -1;
    const pid_t pid = Start(scenario, output);
    kill(pid, SIGTERM);
    return StatusOf(pid, output);
}

TEST(SignalHandlerProcess, FirstSignalEndsInOrder) {
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(RunWithOneSignal("orderly"), 0);
    }
}

TEST(SignalHandlerProcess, SecondSignalEndsAHangingProcess) {
    int output = -1;
    const pid_t pid = Start("stuck", output);
    kill(pid, SIGTERM);
    kill(pid, SIGINT);
    EXPECT_EQ(StatusOf(pid, output), 1);
}

TEST(SignalHandlerProcess, ExitFromAListenerEndsWhateverMainIsDoing) {
    for (int i = 0; i < 20; ++i) {
        ASSERT_EQ(RunWithOneSignal("exit-while-unregistering"), 1);
        ASSERT_EQ(RunWithOneSignal("exit-while-logging"), 1);
        const int either = RunWithOneSignal("exit-while-returning");
        ASSERT_TRUE(either == 0 || either == 1) << either;
    }
}

TEST(SignalHandlerProcess, SignalsPouringInReachNoListenerThatIsGone) {
    int output = -1;
    const pid_t pid = Start("storm", output);
    EXPECT_EQ(StatusOf(pid, output), 0);
}

TEST(SignalHandlerProcess, SignalsWithoutListenerAreIgnored) {
    int output = -1;
    const pid_t pid = Start("no-listener", output);
    EXPECT_EQ(StatusOf(pid, output), 0);
}

}  // namespace
