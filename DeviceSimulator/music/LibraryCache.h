// The last few answers to a question that costs something.
#pragma once

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <utility>
#include <vector>

namespace DeviceSimulator {

/// Any thread may ask. Two that ask for the same at the same time may both make it.
template <typename Key, typename Value>
class LibraryCache {
  public:
    explicit LibraryCache(std::size_t capacity) : m_capacity(capacity) {}

    /// The value kept for `key`, else what `make()` returns, which is made without the lock held.
    template <typename Make>
    Value Get(const Key& key, const Make& make) {
        {
            const std::lock_guard lock(m_mutex);
            if (const auto found = Find(key); found != m_entries.end()) {
                std::rotate(m_entries.begin(), found, found + 1);
                return m_entries.front().second;
            }
        }
        Value value = make();
        const std::lock_guard lock(m_mutex);
        if (Find(key) == m_entries.end()) {
            if (m_entries.size() == m_capacity) {
                m_entries.pop_back();
            }
            m_entries.emplace(m_entries.begin(), key, value);
        }
        return value;
    }

  private:
    using Entries = std::vector<std::pair<Key, Value>>;  // latest first

    typename Entries::iterator Find(const Key& key) {
        return std::find_if(m_entries.begin(), m_entries.end(),
                            [&key](const auto& entry) { return entry.first == key; });
    }

    const std::size_t m_capacity;
    std::mutex m_mutex;
    Entries m_entries;  // under m_mutex
};

}  // namespace DeviceSimulator
