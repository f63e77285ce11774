// The browse list: a window on the one list that the service has open for all its clients.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "IpodControl/view/ViewContext.h"

namespace IpodControl::PlayerView {

struct Item {
    std::int64_t id = 0;
    std::string name;
    bool isOffered = true;  ///< false: it can be shown, not opened
    bool operator==(const Item&) const = default;
};

/// The items of a list that are known: pages of it, near to what is shown.
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

class Browser {
  public:
    explicit Browser(ViewContext& context) : m_context(context) {}

    /// Reads the list that is open, whichever that is.
    void Start();
    /// Nothing is known, and nothing can be opened.
    void Stop();
    void Tick();
    /// When Tick has something to do; none when it has not.
    std::optional<Time> NextWake() const { return m_rereadDue; }
    /// How many items the view shows.
    void SetRows(int rows);

    void Move(std::int64_t distance) { MoveTo(m_cursor + distance); }
    void MoveTo(std::int64_t index);
    void Enter();
    /// Enter, unless that would play.
    void EnterDeeper();
    void Back();
    void Jump(bool isForward);
    /// Shows the items whose names contain `text`; an empty one all. At the root it goes to the first
    /// category that begins with `text` instead.
    void Filter(std::string text);
    /// Reads the list once more; where it is another one by now, the way to it is not known.
    void Reread();
    /// Takes back what would stay behind at the service: filters.
    void Leave();

    bool IsKnown() const { return m_isKnown; }
    bool IsRoot() const { return m_isRoot; }
    std::int64_t Total() const { return m_pages.Total(); }
    std::int64_t Cursor() const { return m_cursor; }
    std::int64_t Top() const { return m_top; }
    int Rows() const { return m_rows; }
    const Item* At(std::int64_t index) const { return m_pages.At(index); }
    const std::string& FilterText() const { return m_wantedFilter; }
    /// Where in the library, for example "Artists > Nerea Vale".
    std::string Path() const;

  private:
    struct Level {
        Item item;
        std::int64_t cursor = 0;
        std::string filter;
    };

    bool IsReady();
    void Forget();
    /// Asks for what moves the service's position, or depends on it: until the answer nothing else does.
    void Step(const std::vector<Request>& requests, ViewContext::BatchHandler handler);
    void Step(const Request& request, ViewContext::Handler handler);
    void Open(std::int64_t cursor) {
        OpenAnd([this, cursor](const Reply& reply) { Adopt(reply, cursor); });
    }
    void OpenAnd(ViewContext::Handler handler);
    void Adopt(const Reply& reply, std::int64_t cursor);
    void Fetch();
    bool FetchOneOf(std::int64_t first, std::int64_t last);
    void FetchPage(std::int64_t page);
    bool IsOfTheKind(const Json::Value& list) const;
    /// Whether an answer comes from the list that is shown.
    bool Fits(const Json::Value& list) const;
    /// Whether it seems to be the list that is shown, though maybe of another length.
    bool BeginsAlike(const Json::Value& list) const;
    void Changed();
    std::vector<Request> Way() const;
    void Choose(const Item& item);
    void Selected(const Item& item, const Reply& reply);
    void ApplyFilter();
    void GoToCategory();
    void KeepCursorShown();
    bool OffersNothing() const;

    ViewContext& m_context;
    ListPages m_pages;
    bool m_isRunning = false;
    bool m_isKnown = false;
    bool m_isRoot = false;
    bool m_isLast = false;
    bool m_isBusy = false;     ///< a step is under way
    bool m_isOpening = false;  ///< the list shown is about to be replaced
    bool m_wantsToEnter = false;
    int m_rows = 1;
    std::int64_t m_cursor = 0;
    std::int64_t m_top = 0;
    unsigned m_generation = 0;  ///< of the list shown: answers of an older one are dropped
    std::vector<std::int64_t> m_inFlight;
    std::optional<Time> m_rereadDue;
    Time m_lastReread{};

    unsigned m_epoch = 0;  ///< of the position: answers to steps from an older one are dropped
    bool m_isPathKnown = false;
    std::vector<Level> m_path;
    std::string m_wantedFilter;
    std::string m_filter;  ///< that the service has
};

}  // namespace IpodControl::PlayerView
