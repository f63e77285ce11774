// A mutex and its lock that the compiler can follow: fields say which mutex guards them, and clang refuses
// to compile a use without it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "ServiceUtil/ThreadSafety.h"

/// Not recursive.
class CAPABILITY("mutex") Mutex {
  public:
    Mutex() = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() ACQUIRE() { m_mutex.lock(); }
    void unlock() RELEASE() { m_mutex.unlock(); }
    bool try_lock() TRY_ACQUIRE(true) { return m_mutex.try_lock(); }

  private:
    std::mutex m_mutex;
};

/// Holds a mutex from its construction to the end of its scope.
class SCOPED_CAPABILITY MutexLock {
  public:
    explicit MutexLock(Mutex& mutex) ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
    ~MutexLock() RELEASE() { m_mutex.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

  private:
    Mutex& m_mutex;
};

/// Waits for what another thread changes under the same mutex.
class Condition {
  public:
    /// Lets `mutex` go while it waits and holds it again when it returns, which may be without a reason: call
    /// it in a loop that tests the condition.
    void Wait(Mutex& mutex) REQUIRES(mutex) { m_condition.wait(mutex); }

    /// The same until `deadline` at most; false once it has passed.
    bool WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) REQUIRES(mutex) {
        return m_condition.wait_until(mutex, deadline) == std::cv_status::no_timeout;
    }

    void NotifyAll() { m_condition.notify_all(); }

  private:
    std::condition_variable_any m_condition;
};
