#include "ServiceUtil/WakeUp.h"

#include <sys/eventfd.h>

#include <cerrno>

WakeUp::WakeUp() : m_fd(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

void WakeUp::Raise() const {
    const int before = errno;
    ::eventfd_write(m_fd.Get(), 1);
    errno = before;
}

void WakeUp::Clear() const {
    eventfd_t count = 0;
    ::eventfd_read(m_fd.Get(), &count);
}
