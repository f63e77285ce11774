#include "IpodControl/view/Browser.h"

#include <algorithm>
#include <utility>

namespace IpodControl::PlayerView {

namespace {

constexpr std::size_t kMostInFlight = 2;
constexpr std::chrono::seconds kRereadPause(1);
constexpr const char* kChanged = "Another client has changed the list: here is what is open now";

bool IsList(const Json::Value& list) {
    return Member(list, "categoryItems").isArray() && FlagMember(list, "isRootCategory") &&
           IntegerMember(list, "totalCount");
}

std::vector<Item> ItemsIn(const Json::Value& list) {
    std::vector<Item> items;
    for (const Json::Value& item : Member(list, "categoryItems")) {
        if (items.size() == static_cast<std::size_t>(ListPages::kPageItems)) {
            break;
        }
        const auto id = IntegerMember(item, "itemId");
        items.push_back({id.value_or(-1), TextMember(item, "itemName"),
                         id.has_value() && FlagMember(item, "isSupported").value_or(true)});
    }
    return items;
}

/// None is 0, and more than the service can count is what it can.
std::int64_t TotalIn(const Json::Value& list) {
    return std::clamp<std::int64_t>(IntegerMember(list, "totalCount").value_or(0), 0, INT32_MAX);
}

}  // namespace

void Browser::Start() {
    Forget();
    m_isRunning = true;
    Open(0);
}

void Browser::Stop() {
    m_isRunning = false;
    m_rereadDue.reset();
    Forget();
}

void Browser::Forget() {
    ++m_generation;
    ++m_epoch;
    m_isKnown = m_isBusy = m_isOpening = m_wantsToEnter = m_isPathKnown = false;
    m_path.clear();
    m_inFlight.clear();
    m_wantedFilter.clear();
    m_filter.clear();
    m_pages.Reset(0);
    m_cursor = m_top = 0;
}

void Browser::Tick() {
    if (m_rereadDue && m_context.now >= *m_rereadDue) {
        m_rereadDue.reset();
        Open(m_cursor);
    }
}

void Browser::Reread() {
    if (!m_isRunning) {
        return;
    }
    OpenAnd([this](const Reply& reply) {
        if (m_isKnown && IsList(reply.result) && !BeginsAlike(reply.result)) {
            m_context.Refuse(kChanged);
            Forget();
        }
        Adopt(reply, m_cursor);
    });
}

/// An iAP2 device is connected some time before its library can be browsed.
bool Browser::OffersNothing() const {
    for (std::int64_t i = 0; m_isRoot && i < Total(); ++i) {
        if (m_pages.At(i) != nullptr && m_pages.At(i)->isOffered) {
            return false;
        }
    }
    return m_isRoot;
}

void Browser::OpenAnd(ViewContext::Handler handler) {
    ++m_generation;
    m_inFlight.clear();
    m_lastReread = m_context.now;
    m_isOpening = true;
    m_context.Ask(PageRequest(0, ListPages::kPageItems),
                  [this, handler = std::move(handler), generation = m_generation](const Reply& reply) {
                      if (generation == m_generation) {
                          m_isOpening = false;
                          handler(reply);
                      }
                  });
}

void Browser::Adopt(const Reply& reply, std::int64_t cursor) {
    if (!IsList(reply.result)) {
        m_context.Refuse("The service did not give the list");
        m_rereadDue = m_context.now + kRereadPause;
        return;
    }
    m_isKnown = true;
    m_isRoot = *FlagMember(reply.result, "isRootCategory");
    m_isLast = FlagMember(reply.result, "isLastCategory").value_or(false);
    auto items = ItemsIn(reply.result);
    m_pages.Reset(m_isRoot ? static_cast<std::int64_t>(items.size()) : TotalIn(reply.result));
    m_pages.Put(0, std::move(items));
    if (m_isRoot) {
        m_isPathKnown = true;
        m_path.clear();
        m_filter.clear();
        m_wantedFilter.clear();
    }
    if (OffersNothing()) {
        m_rereadDue = m_context.now + kRereadPause;
    }
    MoveTo(cursor);
    if (m_wantedFilter == m_filter && std::exchange(m_wantsToEnter, false)) {
        Enter();
    }
}

void Browser::SetRows(int rows) {
    m_rows = std::max(rows, 1);
    KeepCursorShown();
    Fetch();
}

void Browser::MoveTo(std::int64_t index) {
    m_cursor = std::clamp<std::int64_t>(index, 0, std::max<std::int64_t>(Total() - 1, 0));
    KeepCursorShown();
    Fetch();
}

void Browser::KeepCursorShown() {
    m_top = std::clamp(m_top, m_cursor - m_rows + 1, m_cursor);
    m_top = std::clamp<std::int64_t>(m_top, 0, std::max<std::int64_t>(Total() - m_rows, 0));
}

/// What is shown first, then a screen below it and one above. Behind a step the answer would come from
/// another list.
void Browser::Fetch() {
    while (m_isKnown && !m_isRoot && !m_isBusy && !m_isOpening && m_inFlight.size() < kMostInFlight &&
           (FetchOneOf(m_top, m_top + m_rows - 1) || FetchOneOf(m_top, m_top + m_rows + m_rows) ||
            FetchOneOf(m_top - m_rows, m_top))) {
    }
}

bool Browser::FetchOneOf(std::int64_t first, std::int64_t last) {
    const std::int64_t lastPage = std::min(last / ListPages::kPageItems, m_pages.PageCount() - 1);
    for (auto page = std::max<std::int64_t>(first, 0) / ListPages::kPageItems; page <= lastPage; ++page) {
        if (!m_pages.Has(page) && std::count(m_inFlight.begin(), m_inFlight.end(), page) == 0) {
            FetchPage(page);
            return true;
        }
    }
    return false;
}

void Browser::FetchPage(std::int64_t page) {
    m_inFlight.push_back(page);
    // Never beyond the end: lists are circular.
    const Request request = PageRequest(page * ListPages::kPageItems, m_pages.ItemsOf(page));
    m_context.Ask(request, [this, page, generation = m_generation](const Reply& reply) {
        if (generation != m_generation) {
            return;
        }
        std::erase(m_inFlight, page);
        if (!Fits(reply.result)) {
            Changed();
            return;
        }
        m_pages.Put(page, ItemsIn(reply.result));
        Fetch();
    });
}

bool Browser::IsOfTheKind(const Json::Value& list) const {
    return IsList(list) && FlagMember(list, "isRootCategory") == m_isRoot &&
           FlagMember(list, "isLastCategory").value_or(false) == m_isLast;
}

bool Browser::Fits(const Json::Value& list) const {
    return IsOfTheKind(list) && (m_isRoot || TotalIn(list) == Total());
}

bool Browser::BeginsAlike(const Json::Value& list) const {
    const std::vector<Item> items = ItemsIn(list);
    const auto isKnown = [this, index = std::int64_t{0}](const Item& item) mutable {
        const Item* const known = m_pages.At(index++);
        return known == nullptr || *known == item;
    };
    // What the categories offer may change while they are looked at.
    return IsOfTheKind(list) && (m_isRoot || std::all_of(items.begin(), items.end(), isKnown));
}

/// Not more than once a second: two clients that both move would keep each other and the service busy.
void Browser::Changed() {
    m_context.Refuse(kChanged);
    Forget();
    m_rereadDue = std::max(m_lastReread + kRereadPause, m_context.now);
    Tick();
}

}  // namespace IpodControl::PlayerView
