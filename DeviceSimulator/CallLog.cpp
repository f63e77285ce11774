#include "DeviceSimulator/CallLog.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <utility>

namespace DeviceSimulator {

namespace {

std::uint64_t CurrentThread() {
    return static_cast<std::uint64_t>(syscall(SYS_gettid));
}

}  // namespace

std::uint64_t CallLog::Begin(FunctionId function, CallArguments arguments) {
    const std::lock_guard lock(m_mutex);
    if (m_calls.size() == kMostCalls) {
        m_calls.pop_front();
        ++m_firstCall;
    }
    m_calls.push_back({function, std::move(arguments), 0, CurrentThread()});
    ++m_counts[IndexOf(function)];
    if (m_waiters > 0) {
        m_begun.notify_all();
    }
    return m_firstCall + m_calls.size() - 1;
}

void CallLog::End(std::uint64_t call, std::uint32_t result) {
    const std::lock_guard lock(m_mutex);
    if (call >= m_firstCall && call - m_firstCall < m_calls.size()) {
        m_calls[static_cast<std::size_t>(call - m_firstCall)].result = result;
    }
}

std::vector<CallRecord> CallLog::Records(std::optional<FunctionId> only) const {
    const std::lock_guard lock(m_mutex);
    std::vector<CallRecord> records;
    for (const Call& call : m_calls) {
        if (only && *only != call.function) {
            continue;
        }
        CallRecord record;
        record.name = NameOf(call.function);
        const auto* numbers = call.arguments.numbers.data();
        record.arguments.assign(numbers, numbers + call.arguments.count);
        record.text = call.arguments.text;
        record.result = call.result;
        record.thread = call.thread;
        records.push_back(std::move(record));
    }
    return records;
}

void CallLog::Clear() {
    const std::lock_guard lock(m_mutex);
    m_firstCall += m_calls.size();
    m_calls.clear();
    m_counts.fill(0);
}

bool CallLog::WaitFor(FunctionId function, std::size_t times, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(m_mutex);
    ++m_waiters;
    const bool isEnough = m_begun.wait_until(lock, std::chrono::steady_clock::now() + timeout,
                                             [&] { return m_counts[IndexOf(function)] >= times; });
    --m_waiters;
    return isEnough;
}

}  // namespace DeviceSimulator
