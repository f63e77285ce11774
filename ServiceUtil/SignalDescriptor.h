// Signals as a descriptor to poll.
#pragma once

#include <csignal>
#include <initializer_list>
#include <memory>

#include "ServiceUtil/Descriptor.h"

/// One thread uses it.
class SignalDescriptor {
  public:
    /// Holds `signals` back from the calling thread and from those that it starts from then on. Null where
    /// there can be no such descriptor, which `errno` explains: then nothing is held back.
    static std::unique_ptr<SignalDescriptor> Open(std::initializer_list<int> signals);
    /// Once a signal has come they stay held back: whoever sends one may send it twice.
    ~SignalDescriptor();
    SignalDescriptor(const SignalDescriptor&) = delete;
    SignalDescriptor& operator=(const SignalDescriptor&) = delete;

    int Get() const { return m_fd.Get(); }
    /// The next signal's number; 0 when none has come.
    int Take();

  private:
    SignalDescriptor(Descriptor fd, const sigset_t& before);

    Descriptor m_fd;
    const sigset_t m_before;
    bool m_hasTaken = false;
};
