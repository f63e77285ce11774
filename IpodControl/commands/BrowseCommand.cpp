// Walks the library by names.

#include <algorithm>

#include "IpodControl/DisplayText.h"
#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/LibraryPath.h"
#include "IpodControl/commands/ResultText.h"

namespace IpodControl {

namespace {

/// Goes down from `item`, in the list of `path`, until a song plays, which becomes `item`.
Answer PlayBelow(LibraryPath& path, LibraryItem& item) {
    // The way from any list down to a song is shorter than this.
    constexpr int kMostLevels = 16;
    for (int level = 0; level < kMostLevels; ++level) {
        Answer answer = path.Select(item.id);
        if (answer.status != kDone || answer.result == "success") {
            return answer;
        }
        path.Enter(item.id);
        std::optional<LibraryItem> first;
        answer = path.Read([&first](const std::vector<LibraryItem>& items) {
            first = items.empty() ? std::nullopt : std::optional(items.front());
            return false;
        });
        if (answer.status != kDone) {
            return answer;
        }
        if (!first) {
            break;
        }
        item = *first;
    }
    return {kRefused, {}, "there is no song below it."};
}

Json::Value ToJson(const std::vector<LibraryItem>& items) {
    Json::Value list(Json::arrayValue);
    for (const LibraryItem& item : items) {
        Json::Value& entry = list.append(Json::objectValue);
        entry["itemId"] = Json::Int64{item.id};
        entry["itemName"] = item.name;
    }
    return list;
}

void Print(const Settings& settings, const Json::Value& items, const Json::Value& head) {
    if (!settings.json) {
        PrintItems(items);
        return;
    }
    Json::Value list;
    list["items"] = items;
    list["isLastCategory"] = IsTrueMember(head, "isLastCategory");
    PrintJson(list);
}

Answer PrintList(LibraryPath& path, const Settings& settings) {
    std::vector<LibraryItem> all;
    Answer answer = path.Read([&all](const std::vector<LibraryItem>& items) {
        all.insert(all.end(), items.begin(), items.end());
        return true;
    });
    if (answer.status == kDone) {
        // At the root there is more to an item than its name.
        const bool isRoot = IsTrueMember(answer.result, "isRootCategory");
        Print(settings, isRoot ? Member(answer.result, "categoryItems") : ToJson(all), answer.result);
    }
    return answer;
}

Answer Play(LibraryPath& path, const Settings& settings, LibraryItem item) {
    const Answer answer = PlayBelow(path, item);
    if (answer.status != kDone) {
        return answer;
    }
    if (settings.json) {
        PrintJson(Params("playing", item.name));
    } else {
        PrintLine("playing " + Harmless(item.name));
    }
    return answer;
}

/// Leads `path` to the list that holds the last name, which becomes `item`. The answer's result is that
/// list's head.
Answer WalkTo(LibraryPath& path, const std::vector<std::string>& names, LibraryItem& item) {
    Answer answer;
    for (const std::string& name : names) {
        if (&name != &names.front()) {
            path.Enter(item.id);
        }
        answer = path.Find(name, item);
        if (answer.status != kDone) {
            break;
        }
        if (IsTrueMember(answer.result, "isLastCategory") && &name != &names.back()) {
            return {kRefused, {}, '"' + item.name + "\" is a song: there is nothing below it."};
        }
    }
    return answer;
}

Answer Browse(LibraryPath& path, const Settings& settings, const BrowseOptions& options) {
    LibraryItem item;
    const Answer answer = WalkTo(path, options.names, item);
    if (answer.status != kDone) {
        return answer;
    }
    if (options.plays && !options.names.empty()) {
        return Play(path, settings, item);
    }
    // A song is the end of the way: selecting it would play it.
    if (IsTrueMember(answer.result, "isLastCategory")) {
        Print(settings, ToJson({item}), answer.result);
        return answer;
    }
    if (!options.names.empty()) {
        path.Enter(item.id);
    }
    return PrintList(path, settings);
}

}  // namespace

int RunBrowse(const Settings& settings, const BrowseOptions& options) {
    return settings.WithService([&](Client& client) {
        LibraryPath path(client);
        const Answer answer = Browse(path, settings, options);
        return answer.status == kDone ? static_cast<int>(kDone) : Complain(client, answer);
    });
}

std::vector<std::string> NamesBelow(const Settings& settings, const std::vector<std::string>& names,
                                    const std::string& begin) {
    // More are nothing to choose from.
    constexpr std::size_t kMost = 500;
    std::vector<std::string> found;
    // Nobody waits longer for a word.
    Client client(settings.endpoint, std::min(settings.Timeout(), std::chrono::milliseconds(1000)));
    LibraryItem item;
    LibraryPath path(client);
    if (!client.Connect()) {
        return found;
    }
    const Answer answer = WalkTo(path, names, item);
    if (answer.status != kDone || IsTrueMember(answer.result, "isLastCategory")) {
        return found;
    }
    if (!names.empty()) {
        path.Enter(item.id);
    }
    (void)path.Read([&](const std::vector<LibraryItem>& items) {
        for (const LibraryItem& each : items) {
            // What is not printed as it is could not be typed either.
            if (Folded(each.name).starts_with(Folded(begin)) && Harmless(each.name) == each.name) {
                found.push_back(each.name);
            }
        }
        return found.size() < kMost;
    });
    return found;
}

}  // namespace IpodControl
