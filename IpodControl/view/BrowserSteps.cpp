// What moves the service's own position in the library.
#include <strings.h>

#include <algorithm>
#include <utility>

#include "IpodControl/view/Browser.h"

namespace IpodControl::PlayerView {

namespace {

/// Whether a step down to a list has been done. A selection that answers "success" has not: a song plays.
bool IsDone(const Request& request, const Reply& reply) {
    if (request.method == "resetBrowseList") {
        return IsTrueMember(reply.result, "resetSuccess");
    }
    return reply.result == (request.method == "selectBrowseItem" ? "browsing" : "success");
}

}  // namespace

std::string Browser::Path() const {
    if (!m_isPathKnown) {
        return m_isKnown ? "(a list that another client has opened)" : "";
    }
    std::string path;
    for (const Level& level : m_path) {
        path += (path.empty() ? "" : " > ") + level.item.name;
    }
    return path.empty() ? "Library" : path;
}

bool Browser::IsReady() {
    if (!m_isRunning || !m_isKnown || m_isBusy || m_isOpening) {
        m_context.Refuse(m_isRunning ? "One moment: the service has not answered yet"
                                     : "There is no library without a player");
        return false;
    }
    return true;
}

void Browser::EnterDeeper() {
    if (m_isLast) {
        m_context.Refuse("Enter plays it");
    } else {
        Enter();
    }
}

void Browser::Step(const std::vector<Request>& requests, ViewContext::BatchHandler handler) {
    m_isBusy = true;
    m_context.AskAll(requests, [this, epoch = m_epoch, handler = std::move(handler)](const auto& replies) {
        if (epoch != m_epoch) {
            return;
        }
        m_isBusy = false;
        handler(replies);
        // What was typed, and where was gone, in the meantime.
        if (!m_isBusy) {
            ApplyFilter();
            Fetch();
        }
    });
}

void Browser::Step(const Request& request, ViewContext::Handler handler) {
    Step(std::vector{request},
         [handler = std::move(handler)](const std::vector<Reply>& replies) { handler(replies.front()); });
}

/// Looks first whether the item is still there: a number chosen from another list could play anything.
void Browser::Enter() {
    if (!m_isRoot && !m_wantedFilter.empty() && (m_isOpening || m_wantedFilter != m_filter)) {
        m_wantsToEnter = true;
        return;
    }
    if (!IsReady()) {
        return;
    }
    const Item* const item = m_pages.At(m_cursor);
    if (item == nullptr || !item->isOffered) {
        m_context.Refuse(item == nullptr ? (Total() == 0 ? "The list is empty" : "It is not loaded yet")
                                         : "The player does not offer " + item->name + " yet");
        return;
    }
    m_context.Say((m_isLast ? "Playing " : "Opening ") + item->name);
    Step(PageRequest(m_cursor, 1), [this, chosen = *item](const Reply& reply) {
        const Json::Value& items = Member(reply.result, "categoryItems");
        const bool isThere = Fits(reply.result) &&
                             (m_isRoot || (!items.empty() && IntegerMember(items[0], "itemId") == chosen.id &&
                                           TextMember(items[0], "itemName") == chosen.name));
        if (!isThere) {
            Changed();
            return;
        }
        Choose(chosen);
    });
}

/// From the root down to the list that is shown.
std::vector<Request> Browser::Way() const {
    std::vector<Request> way{{"resetBrowseList"}};
    const auto addFilter = [&way](const std::string& filter) {
        if (!filter.empty()) {
            way.push_back({"filterBrowseList", Params("searchText", filter)});
        }
    };
    for (const Level& level : m_path) {
        addFilter(level.filter);
        way.push_back(SelectRequest(level.item.id));
    }
    addFilter(m_filter);
    return way;
}

/// Where the way is known, it is gone in the same batch: another client that moves the position cannot make
/// this play a song of its own list. Playing puts the service back at the root, and the person is still in
/// the list.
void Browser::Choose(const Item& item) {
    std::vector<Request> requests = m_isPathKnown ? Way() : std::vector<Request>();
    const std::vector<Request> way = requests;
    requests.push_back(SelectRequest(item.id));
    if (m_isLast) {
        requests.insert(requests.end(), way.begin(), way.end());
    }
    Step(requests, [this, item, way](const std::vector<Reply>& replies) {
        if (std::equal(way.begin(), way.end(), replies.begin(), IsDone)) {
            Selected(item, replies[way.size()]);
        } else {
            Changed();
        }
    });
}

void Browser::Selected(const Item& item, const Reply& reply) {
    if (reply.result == "browsing") {
        m_context.notice = {};
        if (m_isPathKnown) {
            m_path.push_back({item, m_cursor, m_filter});
        }
        m_filter.clear();
        m_wantedFilter.clear();
        Open(0);
    } else if (reply.result != "success") {
        m_context.Refuse(std::string("The service refused to ") + (m_isLast ? "play " : "open ") + item.name);
    } else if (m_isLast && m_isPathKnown) {
        Open(m_cursor);
    } else {
        if (!m_isLast) {
            m_context.Refuse("Another client has moved the list: a song of it plays now");
        }
        Forget();
        Open(0);
    }
}

/// What filters the service's lists is no other client's business.
void Browser::Leave() {
    const bool isFiltered =
        !m_filter.empty() ||
        std::any_of(m_path.begin(), m_path.end(), [](const Level& level) { return !level.filter.empty(); });
    if (!m_isKnown || !isFiltered) {
        return;
    }
    m_filter.clear();
    for (Level& level : m_path) {
        level.filter.clear();
    }
    if (m_isPathKnown) {
        m_context.AskAll(Way(), [](const std::vector<Reply>&) {});
    } else {
        m_context.Ask({"filterBrowseList", Params("searchText", "")});
    }
}

void Browser::Back() {
    if (!IsReady()) {
        return;
    }
    if (m_isRoot) {
        m_context.Refuse("This is the top");
        return;
    }
    Step({"selectBrowseBack"}, [this](const Reply& reply) {
        if (reply.result != "success") {
            m_context.Refuse("The service refused to go up");
            Open(m_cursor);
            return;
        }
        std::int64_t cursor = 0;
        m_filter.clear();
        if (!m_path.empty()) {
            cursor = m_path.back().cursor;
            m_filter = m_path.back().filter;
            m_path.pop_back();
        }
        m_wantedFilter = m_filter;
        Open(cursor);
    });
}

void Browser::Jump(bool isForward) {
    if (!IsReady()) {
        return;
    }
    if (m_isRoot || !m_wantedFilter.empty()) {
        m_context.Refuse(m_isRoot ? "There are no letters to jump to at the top"
                                  : "Letter jumps look at the whole list: take the filter off with Esc");
        return;
    }
    const char* const method = isForward ? "getNextAlphaNumericIndex" : "getPrevAlphaNumericIndex";
    Step({method, Params("startIndex", Json::Int64{m_cursor})}, [this](const Reply& reply) {
        const auto index = IntegerMember(reply.result, "itemIndex");
        if (index && *index >= 0 && *index < Total()) {
            MoveTo(*index);
        } else {
            Changed();
        }
    });
}

void Browser::Filter(std::string text) {
    if (!m_isKnown) {
        return;
    }
    m_wantedFilter = std::move(text);
    m_wantsToEnter = false;
    if (m_isRoot && !m_wantedFilter.empty()) {
        GoToCategory();
    } else if (!m_isBusy) {
        ApplyFilter();
    }
}

/// One request at a time: of what is typed in the meantime only the last counts.
void Browser::ApplyFilter() {
    if (!m_isKnown || m_isRoot || m_wantedFilter == m_filter) {
        return;
    }
    const Request request{"filterBrowseList", Params("searchText", m_wantedFilter)};
    Step(request, [this, sent = m_wantedFilter](const Reply& reply) {
        if (reply.result != "success") {
            m_context.Refuse("The service refused the filter");
            m_wantsToEnter = false;
            m_wantedFilter = m_filter;
            return;
        }
        m_filter = sent;
        Open(0);
    });
}

/// The service has no filter for the categories. When typing ends, the text is gone and the place stays.
void Browser::GoToCategory() {
    const std::string& begin = m_wantedFilter;
    for (std::int64_t i = 0; i < Total(); ++i) {
        const Item* const item = m_pages.At(i);
        if (item != nullptr && strncasecmp(item->name.c_str(), begin.c_str(), begin.size()) == 0) {
            MoveTo(i);
            return;
        }
    }
    m_context.Refuse("No category begins with that");
}

}  // namespace IpodControl::PlayerView
