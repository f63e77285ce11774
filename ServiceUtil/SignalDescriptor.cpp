#include "ServiceUtil/SignalDescriptor.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <utility>

std::unique_ptr<SignalDescriptor> SignalDescriptor::Open(std::initializer_list<int> signals) {
    sigset_t held{};
    sigemptyset(&held);
    for (const int number : signals) {
        sigaddset(&held, number);
    }
    Descriptor fd(signalfd(-1, &held, SFD_NONBLOCK | SFD_CLOEXEC));
    sigset_t before{};
    if (!fd.IsOpen()) {
        return nullptr;
    }
    if (const int failure = pthread_sigmask(SIG_BLOCK, &held, &before); failure != 0) {
        errno = failure;
        return nullptr;
    }
    return std::unique_ptr<SignalDescriptor>(new SignalDescriptor(std::move(fd), before));
}

SignalDescriptor::SignalDescriptor(Descriptor fd, const sigset_t& before)
    : m_fd(std::move(fd)), m_before(before) {}

SignalDescriptor::~SignalDescriptor() {
    if (!m_hasTaken && Take() == 0) {
        pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
    }
}

int SignalDescriptor::Take() {
    signalfd_siginfo info{};
    if (read(m_fd.Get(), &info, sizeof info) != static_cast<ssize_t>(sizeof info)) {
        return 0;
    }
    m_hasTaken = true;
    return static_cast<int>(info.ssi_signo);
}
