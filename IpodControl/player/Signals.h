// The signals that the view answers, as a descriptor to poll.
#pragma once

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace IpodControl::PlayerView {

/// Holds SIGWINCH, SIGTERM, SIGHUP and SIGINT back from the calling thread and those that it starts.
class Signals {
  public:
    Signals() {
        sigset_t held;
        sigemptyset(&held);
        for (const int number : {SIGWINCH, SIGTERM, SIGHUP, SIGINT}) {
            sigaddset(&held, number);
        }
        pthread_sigmask(SIG_BLOCK, &held, &m_before);
        m_descriptor = signalfd(-1, &held, SFD_NONBLOCK | SFD_CLOEXEC);
    }
    ~Signals() {
        close(m_descriptor);
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;

    int Descriptor() const { return m_descriptor; }
    /// The next signal's number; 0 when there is none.
    int Take() const {
        signalfd_siginfo info{};
        const ssize_t size = read(m_descriptor, &info, sizeof info);
        return size == static_cast<ssize_t>(sizeof info) ? static_cast<int>(info.ssi_signo) : 0;
    }

  private:
    sigset_t m_before{};
    int m_descriptor = -1;
};

}  // namespace IpodControl::PlayerView
