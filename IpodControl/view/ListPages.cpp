#include "IpodControl/view/ListPages.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace IpodControl::PlayerView {

void ListPages::Reset(std::int64_t total) {
    m_total = std::max<std::int64_t>(total, 0);
    m_pages.clear();
}

const Item* ListPages::At(std::int64_t index) const {
    const auto page = m_pages.find(index / kPageItems);
    if (index < 0 || index >= m_total || page == m_pages.end()) {
        return nullptr;
    }
    return &page->second[static_cast<std::size_t>(index % kPageItems)];
}

std::int64_t ListPages::ItemsOf(std::int64_t page) const {
    return std::clamp<std::int64_t>(m_total - page * kPageItems, 0, kPageItems);
}

void ListPages::Put(std::int64_t page, std::vector<Item> items) {
    items.resize(static_cast<std::size_t>(ItemsOf(page)), {-1, "(not delivered)", false});
    m_pages[page] = std::move(items);
    if (m_pages.size() > kMostPages) {
        const auto last = std::prev(m_pages.end());
        const bool isLastFarther = last->first - page > page - m_pages.begin()->first;
        m_pages.erase(isLastFarther ? last : m_pages.begin());
    }
}

}  // namespace IpodControl::PlayerView
