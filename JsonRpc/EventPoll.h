// What descriptors wait for, kept by the system.
#pragma once

#include <sys/epoll.h>

#include <array>
#include <cstdint>
#include <span>

#include "ServiceUtil/Descriptor.h"

namespace Json::Rpc {

/// Descriptors and what is awaited of each (EPOLLIN, EPOLLOUT; errors always are), under a tag of the
/// caller's. One thread at a time.
class EventPoll {
  public:
    /// False with the reason in errno; before anything else.
    bool Open() {
        m_poll = Descriptor(::epoll_create1(EPOLL_CLOEXEC));
        return m_poll.IsOpen();
    }
    void Close() { m_poll.Close(); }

    /// False with the reason in errno when the system keeps no more.
    bool Add(int fd, std::uint32_t events, void* tag) { return Control(EPOLL_CTL_ADD, fd, events, tag); }
    void Modify(int fd, std::uint32_t events, void* tag) { Control(EPOLL_CTL_MOD, fd, events, tag); }
    /// A descriptor that others may hold open as well does not go by itself when it is closed.
    void Remove(int fd) { Control(EPOLL_CTL_DEL, fd, 0, nullptr); }

    /// What has happened, a tag once each; valid until the next call. Empty after `milliseconds` (negative:
    /// never), at a signal, and with `hasFailed` set when there is no waiting.
    std::span<const epoll_event> Wait(int milliseconds, bool& hasFailed);

  private:
    bool Control(int operation, int fd, std::uint32_t events, void* tag) {
        epoll_event event{};
        event.events = events;
        event.data.ptr = tag;
        return ::epoll_ctl(m_poll.Get(), operation, fd, &event) == 0;
    }

    Descriptor m_poll;
    std::array<epoll_event, 64> m_events;
};

}  // namespace Json::Rpc
