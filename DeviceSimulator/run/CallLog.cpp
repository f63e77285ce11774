#include "DeviceSimulator/run/CallLog.h"

#include <algorithm>
#include <utility>

namespace DeviceSimulator {

std::uint64_t CallLog::Begin(FunctionId function, CallRecord call) {
    const std::lock_guard lock(m_mutex);
    if (m_calls.size() == kMostCalls) {
        m_calls.pop_front();
        ++m_firstCall;
    }
    call.isRunning = true;
    call.number = m_firstCall + m_calls.size();
    m_calls.push_back({function, std::move(call)});
    ++m_counts[IndexOf(function)];
    m_begun.notify_all();
    return m_calls.back().record.number;
}

void CallLog::End(std::uint64_t call, std::uint32_t result) {
    const std::lock_guard lock(m_mutex);
    if (call >= m_firstCall && call - m_firstCall < m_calls.size()) {
        CallRecord& ended = m_calls[static_cast<std::size_t>(call - m_firstCall)].record;
        ended.result = result;
        ended.isRunning = false;
    }
}

std::vector<CallRecord> CallLog::Records(const Filter& filter) const {
    const std::lock_guard lock(m_mutex);
    std::vector<CallRecord> records;
    for (auto call = m_calls.rbegin(); call != m_calls.rend() && records.size() < filter.limit; ++call) {
        if (call->record.number < filter.since) {
            break;
        }
        if (!filter.only || *filter.only == call->function) {
            records.push_back(call->record);
            records.back().name = NameOf(call->function);
        }
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
    const auto first =
        m_calls.begin() + static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(skipped, m_calls.size()));
    return static_cast<std::size_t>(
        std::count_if(first, m_calls.end(), [&](const Call& call) { return call.function == function; }));
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
    return m_begun.wait_for(lock, timeout, [&] { return CountOf(function, since) >= times; });
}

}  // namespace DeviceSimulator
