// The items of a list that are known: pages of it, near to what is shown.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace IpodControl::PlayerView {

struct Item {
    std::int64_t id = 0;
    std::string name;
    bool isOffered = true;  ///< false: it can be shown, not opened
};

class ListPages {
  public:
    static constexpr std::int64_t kPageItems = 64;
    static constexpr std::size_t kMostPages = 48;

    /// Forgets what it knew. `total` is not negative.
    void Reset(std::int64_t total) {
        m_total = total;
        m_pages.clear();
    }
    std::int64_t Total() const { return m_total; }

    /// Null when it is not known.
    const Item* At(std::int64_t index) const {
        const auto page = m_pages.find(index / kPageItems);
        const bool isKnown = index >= 0 && index < m_total && page != m_pages.end();
        return isKnown ? &page->second[static_cast<std::size_t>(index % kPageItems)] : nullptr;
    }

    std::int64_t PageCount() const { return (m_total + kPageItems - 1) / kPageItems; }
    bool Has(std::int64_t page) const { return m_pages.count(page) != 0; }
    /// What that page holds when it is complete.
    std::int64_t ItemsOf(std::int64_t page) const {
        return std::clamp<std::int64_t>(m_total - page * kPageItems, 0, kPageItems);
    }
    /// Items beyond the page are left; those that it lacks stand as not offered. Where there are more pages
    /// than can be kept, the farthest from this one goes.
    void Put(std::int64_t page, std::vector<Item> items) {
        items.resize(static_cast<std::size_t>(ItemsOf(page)), {-1, "(not delivered)", false});
        m_pages[page] = std::move(items);
        if (m_pages.size() > kMostPages) {
            const auto last = std::prev(m_pages.end());
            const bool isLastFarther = last->first - page > page - m_pages.begin()->first;
            m_pages.erase(isLastFarther ? last : m_pages.begin());
        }
    }

  private:
    std::int64_t m_total = 0;
    std::map<std::int64_t, std::vector<Item>> m_pages;
};

}  // namespace IpodControl::PlayerView
