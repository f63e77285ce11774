#include "IpodControl/commands/LibraryPath.h"

#include <algorithm>

namespace IpodControl {

namespace {

constexpr std::int64_t kPage = 1000;

std::vector<LibraryItem> ItemsOf(const Json::Value& list) {
    std::vector<LibraryItem> items;
    const Json::Value& values = Member(list, "categoryItems");
    for (Json::ArrayIndex i = 0; values.isArray() && i < values.size(); ++i) {
        items.push_back({IntegerMember(values[i], "itemId").value_or(-1), TextMember(values[i], "itemName")});
    }
    return items;
}

Answer NotFound(const std::string& name, const NameSearch& search) {
    std::string text = "there is no \"" + name + "\" in this list";
    const char* separator = "; near it: ";
    for (const std::string& near : search.Nearest()) {
        text += separator + ('"' + near + '"');
        separator = ", ";
    }
    return {kRefused, {}, text + "."};
}

}  // namespace

Answer LibraryPath::GoAndAsk(const char* method, const Json::Value& params) {
    std::vector<Request> requests{{"resetBrowseList"}};
    for (const std::int64_t id : m_ids) {
        requests.push_back({"selectBrowseItem", Params("itemId", Json::Int64{id})});
    }
    requests.push_back({method, params});
    const auto replies = m_client.CallBatch(requests);
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

Answer LibraryPath::Read(const std::function<bool(const std::vector<LibraryItem>& items)>& takes) {
    std::int64_t read = 0;
    std::int64_t total = kPage;
    for (;;) {
        Json::Value params = Params("startIndex", Json::Int64{read});
        // Lists are circular: more than there is would begin again.
        params["itemCount"] = Json::Int64{std::min(kPage, total - read)};
        Answer answer = GoAndAsk("getBrowseList", params);
        const auto items = ItemsOf(answer.result);
        if (answer.status != kDone || !takes(items)) {
            return answer;
        }
        read += static_cast<std::int64_t>(items.size());
        total = IntegerMember(answer.result, "totalCount").value_or(0);
        if (items.empty() || read >= total) {
            return answer;
        }
    }
}

Answer LibraryPath::Find(const std::string& name, LibraryItem& item) {
    NameSearch search(name);
    Answer answer = Read([&search](const std::vector<LibraryItem>& items) {
        for (const LibraryItem& each : items) {
            search.Look(each);
        }
        return !search.IsExact();
    });
    if (answer.status != kDone) {
        return answer;
    }
    if (!search.Found()) {
        return NotFound(name, search);
    }
    item = *search.Found();
    return answer;
}

Answer LibraryPath::Select(std::int64_t id) {
    return GoAndAsk("selectBrowseItem", Params("itemId", Json::Int64{id}));
}

}  // namespace IpodControl
