// What moves the service's own position in the library.
#include <strings.h>

#include <utility>

#include "IpodControl/player/Browser.h"
#include "IpodControl/player/Fields.h"

namespace IpodControl::PlayerView {

namespace {

Json::Value With(const char* name, Json::Value value) {
    Json::Value params;
    params[name] = std::move(value);
    return params;
}

bool Says(const Reply& reply, const char* word) {
    return reply.result.isString() && reply.result == word;
}

}  // namespace

std::string Browser::Path() const {
    if (!m_isPathKnown) {
        return m_isKnown ? "(a list that another client has opened)" : "";
    }
    std::string path;
    for (const Step& step : m_path) {
        path += (path.empty() ? "" : " > ") + step.item.name;
    }
    return path.empty() ? "Library" : path;
}

bool Browser::IsReady() {
    if (!m_isRunning || !m_isKnown || m_isBusy || m_isOpening) {
        m_session.Refuse(m_isRunning ? "One moment: the service has not answered yet"
                                     : "There is no library without a player");
        return false;
    }
    return true;
}

void Browser::EnterDeeper() {
    if (m_isLast) {
        m_session.Refuse("Enter plays it");
    } else {
        Enter();
    }
}

void Browser::Take(const char* method, Json::Value params, Calls::Handler handler) {
    m_isBusy = true;
    m_session.Ask(method, std::move(params),
                  [this, epoch = m_epoch, handler = std::move(handler)](const Reply& reply) {
                      if (epoch != m_epoch) {
                          return;
                      }
                      m_isBusy = false;
                      handler(reply);
                      // What was typed, and where was gone, in the meantime.
                      if (!m_isBusy) {
                          ApplyFilter();
                          Fetch();
                      }
                  });
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
        m_session.Refuse(item == nullptr ? (Total() == 0 ? "The list is empty" : "It is not loaded yet")
                                         : "The player does not offer " + item->name + " yet");
        return;
    }
    m_session.Say((m_isLast ? "Playing " : "Opening ") + item->name);
    Take("getBrowseList", PageParams(m_cursor, 1), [this, chosen = *item](const Reply& reply) {
        const Json::Value& items = Field(reply.result, "categoryItems");
        const bool isThere = Fits(reply.result) &&
                             (m_isRoot || (!items.empty() && IntegerField(items[0], "itemId") == chosen.id &&
                                           TextIn(items[0], "itemName") == chosen.name));
        if (!isThere) {
            Changed();
            return;
        }
        Take("selectBrowseItem", With("itemId", Json::Int64{chosen.id}),
             [this, chosen](const Reply& answer) { Selected(chosen, answer); });
    });
}

void Browser::Selected(const Item& item, const Reply& reply) {
    if (Says(reply, "browsing")) {
        m_session.notice = {};
        if (m_isPathKnown) {
            m_path.push_back({item, m_cursor, m_filter});
        }
        m_filter.clear();
        m_wantedFilter.clear();
        Open(0);
    } else if (Says(reply, "success")) {
        WalkBack();
    } else {
        m_session.Refuse("The service refused to open " + item.name);
    }
}

/// Playing an item puts the service back at the root, and the person is still in the list.
void Browser::WalkBack() {
    std::vector<Select> steps;
    const auto addFilter = [&steps](const std::string& filter) {
        if (!filter.empty()) {
            steps.push_back({"filterBrowseList", With("searchText", filter)});
        }
    };
    for (const Step& step : m_path) {
        addFilter(step.filter);
        steps.push_back({"selectBrowseItem", With("itemId", Json::Int64{step.item.id})});
    }
    addFilter(m_filter);
    if (m_isPathKnown) {
        Walk(steps, 0);
    } else {
        Open(0);
    }
}

void Browser::Walk(const std::vector<Select>& steps, std::size_t step) {
    if (step == steps.size()) {
        Open(m_cursor);
        return;
    }
    Take(steps[step].method, steps[step].params, [this, steps, step](const Reply& reply) {
        if (Says(reply, "browsing") || Says(reply, "success")) {
            Walk(steps, step + 1);
            return;
        }
        Forget();
        Open(0);
    });
}

void Browser::Back() {
    if (!IsReady()) {
        return;
    }
    if (m_isRoot) {
        m_session.Refuse("This is the top");
        return;
    }
    Take("selectBrowseBack", {}, [this](const Reply& reply) {
        if (!Says(reply, "success")) {
            m_session.Refuse("The service refused to go up");
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
        m_session.Refuse(m_isRoot ? "There are no letters to jump to at the top"
                                  : "Letter jumps look at the whole list: take the filter off with Esc");
        return;
    }
    Take(isForward ? "getNextAlphaNumericIndex" : "getPrevAlphaNumericIndex",
         With("startIndex", Json::Int64{m_cursor}), [this](const Reply& reply) {
             const auto index = IntegerField(reply.result, "itemIndex");
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
    if (m_isRoot) {
        GoToCategory(m_wantedFilter);
    } else if (!m_isBusy) {
        ApplyFilter();
    }
}

/// One request at a time: of what is typed in the meantime only the last counts.
void Browser::ApplyFilter() {
    if (!m_isKnown || m_isRoot || m_wantedFilter == m_filter) {
        return;
    }
    Take("filterBrowseList", With("searchText", m_wantedFilter),
         [this, sent = m_wantedFilter](const Reply& reply) {
             if (!Says(reply, "success")) {
                 m_session.Refuse("The service refused the filter");
                 m_wantsToEnter = false;
                 m_wantedFilter = m_filter;
                 return;
             }
             m_filter = sent;
             Open(0);
         });
}

/// The service has no filter for the categories. When typing ends, the text is gone and the place stays.
void Browser::GoToCategory(std::string_view begin) {
    if (begin.empty()) {
        return;
    }
    for (std::int64_t i = 0; i < Total(); ++i) {
        const Item* const item = m_pages.At(i);
        if (item != nullptr && strncasecmp(item->name.c_str(), begin.data(), begin.size()) == 0) {
            MoveTo(i);
            return;
        }
    }
    m_session.Refuse("No category begins with that");
}

}  // namespace IpodControl::PlayerView
