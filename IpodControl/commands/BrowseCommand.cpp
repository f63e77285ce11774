// Walks the library by names.

#include <algorithm>
#include <functional>

#include "IpodControl/DisplayText.h"
#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/NameSearch.h"

namespace IpodControl {

namespace {

/// A way from the library's root down to a list. The browse position is the service's, one for all clients.
/// So whatever is read or chosen here goes down from the root in the same batch, in which no other client's
/// request has a place.
class LibraryPath {
  public:
    explicit LibraryPath(Client& client) : m_client(client) {}

    /// Goes on to an item of the list where this is, at the next operation.
    void Enter(const Json::Value& item) { m_steps.push_back(SelectRequest(IdOf(item))); }

    /// Opens or plays an item of the list: "browsing" or "success".
    Answer Select(const Json::Value& item) { return GoAndAsk(SelectRequest(IdOf(item))); }

    /// Reads the list item by item, page by page, until `takes` says false to a page's last. The list's head
    /// is the answer's result: "isLastCategory", "totalCount".
    Answer Read(const std::function<bool(const Json::Value& item)>& takes) {
        constexpr std::int64_t kPage = 1000;
        std::int64_t read = 0;
        std::int64_t total = kPage;
        for (;;) {
            // Lists are circular: more than there is would begin again.
            Answer answer = GoAndAsk(PageRequest(read, std::min(kPage, total - read)));
            const Json::Value& items = Member(answer.result, "categoryItems");
            const Json::ArrayIndex count = answer.status == kDone && items.isArray() ? items.size() : 0;
            bool goesOn = false;
            for (Json::ArrayIndex i = 0; i < count; ++i) {
                goesOn = takes(items[i]);
            }
            read += count;
            total = IntegerMember(answer.result, "totalCount").value_or(0);
            if (!goesOn || read >= total) {
                return answer;
            }
        }
    }

    /// Finds `name` in the list, which becomes `item`; as Read otherwise.
    Answer Find(const std::string& name, Json::Value& item) {
        NameSearch search(name);
        Answer answer = Read([&search](const Json::Value& each) {
            search.Look(each);
            return !search.IsExact();
        });
        item = search.Found();
        if (answer.status != kDone || item.isObject()) {
            return answer;
        }
        std::string text = "there is no \"" + name + "\" in this list";
        const char* separator = "; near it: ";
        for (const std::string& near : search.Nearest()) {
            text += separator + ('"' + near + '"');
            separator = ", ";
        }
        return {kRefused, {}, text + "."};
    }

  private:
    static std::int64_t IdOf(const Json::Value& item) { return IntegerMember(item, "itemId").value_or(-1); }

    Answer GoAndAsk(const Request& last) {
        std::vector<Request> requests{{"resetBrowseList"}};
        requests.insert(requests.end(), m_steps.begin(), m_steps.end());
        requests.push_back(last);
        const auto replies = m_client.CallAll(requests);
        if (!replies) {
            return {kNoService, {}, replies.Why().text + ".", true};
        }
        Answer answer;
        for (std::size_t i = 0; i < requests.size() && answer.status == kDone; ++i) {
            answer = Weigh(*FindMethod(requests[i].method), requests[i].params, (*replies)[i]);
            if (answer.result == "success" && i + 1 < requests.size()) {
                return {kRefused, {}, "the library has changed on the way down."};
            }
        }
        return answer;
    }

    Client& m_client;
    std::vector<Request> m_steps;
};

/// Goes down from `item`, in the list of `path`, until a song plays, which becomes `item`.
Answer PlayBelow(LibraryPath& path, Json::Value& item) {
    // The way from any list down to a song is shorter than this.
    constexpr int kMostLevels = 16;
    for (int level = 0; level < kMostLevels && item.isObject(); ++level) {
        Answer answer = path.Select(item);
        if (answer.status != kDone || answer.result == "success") {
            return answer;
        }
        path.Enter(item);
        item = {};
        answer = path.Read([&item](const Json::Value& each) {
            item = item.isNull() ? each : item;
            return false;
        });
        if (answer.status != kDone) {
            return answer;
        }
    }
    return {kRefused, {}, "there is no song below it."};
}

Answer Play(LibraryPath& path, const Settings& settings, Json::Value item) {
    const Answer answer = PlayBelow(path, item);
    const std::string name = TextMember(item, "itemName");
    if (answer.status == kDone && settings.json) {
        PrintJson(Params("playing", name));
    } else if (answer.status == kDone) {
        PrintLine("playing " + Harmless(name));
    }
    return answer;
}

/// Leads `path` to the list that holds the last name, which becomes `item`; to the list below it where it is
/// no song and `goesInside`. The answer's result is the head of the list that holds it.
Answer WalkTo(LibraryPath& path, const std::vector<std::string>& names, bool goesInside, Json::Value& item) {
    Answer answer;
    for (const std::string& name : names) {
        const bool isLast = &name == &names.back();
        answer = path.Find(name, item);
        if (answer.status != kDone) {
            break;
        }
        const bool isSong = IsTrueMember(answer.result, "isLastCategory");
        if (isSong && !isLast) {
            return {kRefused,
                    {},
                    '"' + TextMember(item, "itemName") + "\" is a song: there is nothing below it."};
        }
        if (!isSong && (goesInside || !isLast)) {
            path.Enter(item);
        }
    }
    return answer;
}

Answer Browse(LibraryPath& path, const Settings& settings, const std::vector<std::string>& names,
              bool plays) {
    Json::Value item;
    Answer answer = WalkTo(path, names, !plays, item);
    if (answer.status != kDone) {
        return answer;
    }
    if (plays && !names.empty()) {
        return Play(path, settings, item);
    }
    Json::Value list;
    Json::Value& items = list["items"] = Json::arrayValue;
    // A song is the end of the way: selecting it would play it.
    if (IsTrueMember(answer.result, "isLastCategory")) {
        items.append(item);
    } else {
        answer = path.Read([&items](const Json::Value& each) { return items.append(each), true; });
    }
    if (answer.status == kDone && settings.json) {
        list["isLastCategory"] = IsTrueMember(answer.result, "isLastCategory");
        PrintJson(list);
    } else if (answer.status == kDone) {
        PrintItems(items);
    }
    return answer;
}

}  // namespace

int RunBrowse(const Settings& settings, const std::vector<std::string>& names, bool plays) {
    Client client(settings.endpoint, settings.Timeout());
    LibraryPath path(client);
    const Answer answer = Browse(path, settings, names, plays);
    return answer.status == kDone ? static_cast<int>(kDone) : Complain(client, answer);
}

std::vector<std::string> NamesBelow(const Settings& settings, const std::vector<std::string>& names,
                                    const std::string& begin) {
    // More are nothing to choose from.
    constexpr std::size_t kMost = 500;
    std::vector<std::string> found;
    // Nobody waits longer for a word.
    Client client(settings.endpoint, std::min(settings.Timeout(), std::chrono::milliseconds(1000)));
    LibraryPath path(client);
    Json::Value item;
    const Answer answer = WalkTo(path, names, true, item);
    if (answer.status != kDone || IsTrueMember(answer.result, "isLastCategory")) {
        return found;
    }
    (void)path.Read([&](const Json::Value& each) {
        const std::string name = TextMember(each, "itemName");
        // What is not printed as it is could not be typed either.
        if (Folded(name).starts_with(Folded(begin)) && Harmless(name) == name) {
            found.push_back(name);
        }
        return found.size() < kMost;
    });
    return found;
}

}  // namespace IpodControl
