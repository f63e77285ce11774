// A thread whose stack has the size that it needs.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>

/// As std::thread, which leaves the size to the system: eight megabytes of address space each, usually. Has
/// to be joined before the object goes, unless the process ends first. One thread uses the object.
class Thread {
  public:
    Thread() = default;
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    /// Starts `body`, which lets no exception out. False where there can be no thread. Once.
    bool Start(std::size_t stackBytes, std::function<void()> body);

    bool IsStarted() const { return m_isStarted; }

    /// Waits for the end of `body`; returns at once where it was never started.
    void Join();

  private:
    pthread_t m_thread{};
    bool m_isStarted = false;
};
