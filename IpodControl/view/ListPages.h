// The items of a list that are known: pages of it, near to what is shown.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace IpodControl::PlayerView {

struct Item {
    std::int64_t id = 0;
    std::string name;
    bool isOffered = true;  ///< false: it can be shown, not opened
    bool operator==(const Item&) const = default;
};

class ListPages {
  public:
    static constexpr std::int64_t kPageItems = 64;
    static constexpr std::size_t kMostPages = 48;

    /// Forgets what it knew. A negative `total` is 0.
    void Reset(std::int64_t total);
    std::int64_t Total() const { return m_total; }

    /// Null when it is not known.
    const Item* At(std::int64_t index) const;

    std::int64_t PageCount() const { return (m_total + kPageItems - 1) / kPageItems; }
    bool Has(std::int64_t page) const { return m_pages.count(page) != 0; }
    /// What that page holds when it is complete.
    std::int64_t ItemsOf(std::int64_t page) const;
    /// Items beyond the page are left; those that it lacks stand as not offered. Where there are more pages
    /// than can be kept, the farthest from this one goes.
    void Put(std::int64_t page, std::vector<Item> items);

  private:
    std::int64_t m_total = 0;
    std::map<std::int64_t, std::vector<Item>> m_pages;
};

}  // namespace IpodControl::PlayerView
