// Waiting for descriptors and signals.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/time.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "ServiceUtil/Poll.h"
#include "ServiceUtil/SignalDescriptor.h"
#include "ServiceUtil/WakeUp.h"

namespace {

/// While it lives the process has no descriptor left to open.
class NoDescriptors {
  public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &m_before); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

  private:
    rlimit m_before{};
};

bool IsHeld(int number) {
    sigset_t held{};
    pthread_sigmask(SIG_BLOCK, nullptr, &held);
    return sigismember(&held, number) == 1;
}

TEST(PollTest, WaitsThroughSignalsUntilItsDeadline) {
    struct sigaction ignore {};
    struct sigaction before {};
    ignore.sa_handler = [](int) {};
    sigaction(SIGALRM, &ignore, &before);
    const itimerval often{{0, 2000}, {0, 2000}};
    setitimer(ITIMER_REAL, &often, nullptr);
    const WakeUp wakeUp;
    std::array<pollfd, 1> entries{{{wakeUp.Fd(), POLLIN, 0}}};
    const Deadline deadline = In(std::chrono::milliseconds(50));
    EXPECT_EQ(PollUntil(entries, deadline), PollEnd::Over);
    EXPECT_GE(std::chrono::steady_clock::now(), deadline);
    wakeUp.Raise();
    EXPECT_EQ(PollUntil(entries, std::nullopt), PollEnd::Ready);
    EXPECT_EQ(PollUntil(entries, deadline), PollEnd::Ready) << "ready although it is over";
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &before, nullptr);
    const NoDescriptors none;
    EXPECT_EQ(PollUntil(entries, std::nullopt), PollEnd::Failed);
    EXPECT_EQ(errno, EINVAL);
}

TEST(SignalDescriptorTest, HoldsBackWhatItTellsAndNothingWhereItCannotTell) {
    {
        const NoDescriptors none;
        EXPECT_EQ(SignalDescriptor::Open({SIGUSR1}), nullptr);
        EXPECT_EQ(errno, EMFILE);
        EXPECT_FALSE(WakeUp().IsOpen());
    }
    EXPECT_FALSE(IsHeld(SIGUSR1)) << "it would be lost";
    auto signals = SignalDescriptor::Open({SIGUSR1, SIGUSR2});
    ASSERT_NE(signals, nullptr);
    EXPECT_EQ(signals->Take(), 0);
    signals.reset();
    EXPECT_FALSE(IsHeld(SIGUSR1));
    signals = SignalDescriptor::Open({SIGUSR1, SIGUSR2});
    pthread_kill(pthread_self(), SIGUSR2);
    EXPECT_EQ(signals->Take(), SIGUSR2);
    signals.reset();
    EXPECT_TRUE(IsHeld(SIGUSR2)) << "the same one may come twice";
}

}  // namespace
