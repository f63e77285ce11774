// The record of the calls that were made.
#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "DeviceSimulator/wire/FunctionId.h"

namespace DeviceSimulator {

/// One call that was made, in the order in which the calls began.
struct CallRecord {
    std::string name;  ///< for example "eDevMgriPodPlay"
    std::vector<std::int64_t>
        arguments;     ///< the numbers handed in, out pointers left out; in/out values as they came in
    std::string text;  ///< a text argument, else empty
    std::uint32_t result = 0;  ///< the code answered; 0 while the call is still running
    bool isRunning = false;
    std::uint64_t thread = 0;  ///< the kernel's thread id
    std::uint64_t number = 0;  ///< counts up with every call, from the process's first
};

/// Every member may be called from any thread.
class CallLog {
  public:
    /// Of more calls, the oldest are forgotten: a player that runs for days does not grow.
    static constexpr std::size_t kMostCalls = 16'384;

    /// Keeps `call`, in which the caller has filled in arguments, text and thread. A number to hand to End.
    std::uint64_t Begin(FunctionId function, CallRecord call);
    void End(std::uint64_t call, std::uint32_t result);

    struct Filter {
        std::optional<FunctionId> only{};
        std::uint64_t since = 0;       ///< the lowest number
        std::size_t limit = SIZE_MAX;  ///< the newest so many
    };

    std::vector<CallRecord> Records(const Filter& filter) const;
    /// The number that the next call gets.
    std::uint64_t NextNumber() const;
    void Clear();
    /// Waits until `function` has begun at least `times` times since the last Clear or, unless `since` is 0,
    /// in calls of that number or a higher one.
    bool WaitFor(FunctionId function, std::size_t times, std::chrono::milliseconds timeout,
                 std::uint64_t since = 0) const;

  private:
    struct Call {
        FunctionId function;
        CallRecord record;  // without the name
    };

    std::size_t CountOf(FunctionId function, std::uint64_t since) const;

    mutable std::mutex m_mutex;
    mutable std::condition_variable m_begun;
    std::deque<Call> m_calls;
    std::uint64_t m_firstCall = 1;  // the number of m_calls.front()
    std::array<std::size_t, kFunctionCount> m_counts{};
};

}  // namespace DeviceSimulator
