#include "DeviceSimulator/run/CallLog.h"

#include <algorithm>
#include <utility>

namespace DeviceSimulator {

std::uint64_t CallLog::Begin(FunctionId function, std::uint64_t thread, CallArguments arguments) {
    const std::lock_guard lock(m_mutex);
    if (m_calls.size() == kMostCalls) {
        m_calls.pop_front();
        ++m_firstCall;
    }
    m_calls.push_back({function, thread, std::move(arguments)});
    ++m_counts[IndexOf(function)];
    if (m_waiters > 0) {
        m_begun.notify_all();
    }
    return m_firstCall + m_calls.size() - 1;
}

void CallLog::End(std::uint64_t call, std::uint32_t result) {
    const std::lock_guard lock(m_mutex);
    if (call >= m_firstCall && call - m_firstCall < m_calls.size()) {
        Call& ended = m_calls[static_cast<std::size_t>(call - m_firstCall)];
        ended.result = result;
        ended.isRunning = false;
    }
}

std::vector<CallRecord> CallLog::Records(const Filter& filter) const {
    const std::lock_guard lock(m_mutex);
    std::vector<CallRecord> records;
    for (std::size_t i = m_calls.size(); i > 0 && records.size() < filter.limit; --i) {
        const Call& call = m_calls[i - 1];
        const std::uint64_t number = m_firstCall + i - 1;
        if (number < filter.since) {
            break;
        }
        if (filter.only && *filter.only != call.function) {
            continue;
        }
        CallRecord& record = records.emplace_back();
        record.name = NameOf(call.function);
        const auto* numbers = call.arguments.numbers.data();
        record.arguments.assign(numbers, numbers + call.arguments.count);
        record.text = call.arguments.text;
        record.result = call.result;
        record.isRunning = call.isRunning;
        record.thread = call.thread;
        record.number = number;
    }
    std::reverse(records.begin(), records.end());
    return records;
}

std::uint64_t CallLog::NextNumber() const {
    const std::lock_guard lock(m_mutex);
    return m_firstCall + m_calls.size();
}

std::size_t CallLog::CountOf(FunctionId function, std::uint64_t since) const {
    if (since == 0) {
        return m_counts[IndexOf(function)];
    }
    const std::uint64_t skipped = since > m_firstCall ? since - m_firstCall : 0;
    std::size_t count = 0;
    for (auto i = static_cast<std::size_t>(std::min<std::uint64_t>(skipped, m_calls.size()));
         i < m_calls.size(); ++i) {
        count += m_calls[i].function == function ? 1U : 0U;
    }
    return count;
}

void CallLog::Clear() {
    const std::lock_guard lock(m_mutex);
    m_firstCall += m_calls.size();
    m_calls.clear();
    m_counts.fill(0);
}

bool CallLog::WaitFor(FunctionId function, std::size_t times, std::chrono::milliseconds timeout,
                      std::uint64_t since) const {
    std::unique_lock lock(m_mutex);
    ++m_waiters;
    const bool isEnough = m_begun.wait_until(lock, std::chrono::steady_clock::now() + timeout,
                                             [&] { return CountOf(function, since) >= times; });
    --m_waiters;
    return isEnough;
}

}  // namespace DeviceSimulator
