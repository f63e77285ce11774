#include "DeviceSimulator/WorkerThreads.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include "DeviceSimulator/Thread.h"

namespace DeviceSimulator {

namespace {

constexpr std::size_t kMostThreads = 8;

/// The first exception of any of the threads.
class FirstError {
  public:
    void Guard(const std::function<void()>& work) {
        try {
            work();
        } catch (...) {
            const std::lock_guard lock(m_mutex);
            if (m_error == nullptr) {
                m_error = std::current_exception();
            }
        }
    }
    /// Once no other thread is at work.
    void Rethrow() const {
        if (m_error != nullptr) {
            std::rethrow_exception(m_error);
        }
    }

  private:
    std::mutex m_mutex;
    std::exception_ptr m_error;
};

}  // namespace

void RunOnThreads(std::size_t most, const std::function<void()>& work) {
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t count = std::min({most, processors, kMostThreads});
    FirstError error;
    std::vector<std::thread> threads;
    threads.reserve(count);
    try {
        while (threads.size() + 1 < count) {
            threads.push_back(StartThread("devmgr-tags", [&] { error.Guard(work); }));
        }
    } catch (const std::system_error&) {
        // No more threads to be had: those that there are do it.
    }
    error.Guard(work);
    std::for_each(threads.begin(), threads.end(), [](std::thread& thread) { thread.join(); });
    error.Rethrow();
}

}  // namespace DeviceSimulator
