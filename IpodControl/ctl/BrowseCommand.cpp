// Walks the library by names.

#include "IpodControl/Fields.h"
#include "IpodControl/ctl/Commands.h"
#include "IpodControl/ctl/Library.h"
#include "IpodControl/ctl/Output.h"
#include "IpodControl/ctl/ResultText.h"
#include "IpodControl/ctl/Text.h"

namespace IpodControl {

namespace {

std::vector<LibraryItem> ItemsOf(const Json::Value& items) {
    std::vector<LibraryItem> list;
    if (items.isArray()) {
        for (const Json::Value& item : items) {
            list.push_back({IntegerField(item, "itemId").value_or(-1), TextField(item, "itemName")});
        }
    }
    return list;
}

Answer Select(Client& client, std::int64_t id) {
    Json::Value params;
    params["itemId"] = Json::Int64{id};
    return Ask(client, "selectBrowseItem", params);
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

/// Finds `name` in the list that is open. The answer's result is the list's head.
Answer Find(Client& client, const std::string& name, LibraryItem& item) {
    NameSearch search(name);
    Answer answer = ReadList(client, [&search](const Json::Value& items) {
        for (const LibraryItem& each : ItemsOf(items)) {
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

/// Plays the first song below the list that is open, which becomes `song`.
Answer PlayFirst(Client& client, LibraryItem& song) {
    // The way from any list down to a song is shorter than this.
    constexpr int kMostLevels = 16;
    for (int level = 0; level < kMostLevels; ++level) {
        std::vector<LibraryItem> items;
        Answer answer = ReadList(client, [&items](const Json::Value& page) {
            items = ItemsOf(page);
            return false;
        });
        if (answer.status != kDone) {
            return answer;
        }
        if (items.empty()) {
            break;
        }
        song = items.front();
        answer = Select(client, song.id);
        if (answer.status != kDone || answer.result == "success") {
            return answer;
        }
    }
    return {kRefused, {}, "there is no song below it."};
}

void Print(const Settings& settings, const Json::Value& items, const Json::Value& head) {
    if (!settings.json) {
        PrintItems(items);
        return;
    }
    Json::Value list;
    list["items"] = items;
    list["isLastCategory"] = BoolField(head, "isLastCategory");
    PrintJson(list);
}

Answer PrintOpenList(Client& client, const Settings& settings) {
    Json::Value all(Json::arrayValue);
    Answer answer = ReadList(client, [&all](const Json::Value& items) {
        for (const Json::Value& item : items) {
            all.append(item);
        }
        return true;
    });
    if (answer.status == kDone) {
        Print(settings, all, answer.result);
    }
    return answer;
}

void PrintPlaying(const Settings& settings, const std::string& name) {
    if (settings.json) {
        Json::Value playing;
        playing["playing"] = name;
        PrintJson(playing);
    } else {
        PrintLine("playing " + Harmless(name));
    }
}

/// A song is the end of the way: selecting it would play it.
Answer PrintSong(const Settings& settings, const LibraryItem& song, const Json::Value& head) {
    Json::Value items(Json::arrayValue);
    items[0]["itemId"] = Json::Int64{song.id};
    items[0]["itemName"] = song.name;
    Print(settings, items, head);
    return {};
}

/// Opens the lists that the names lead to, all but the last one; that one becomes `item`. The answer's result
/// is the head of the list that holds it.
Answer WalkTo(Client& client, const std::vector<std::string>& names, LibraryItem& item) {
    Answer answer;
    for (const std::string& name : names) {
        if (&name != &names.front()) {
            answer = Select(client, item.id);
        }
        if (answer.status == kDone) {
            answer = Find(client, name, item);
        }
        if (answer.status != kDone) {
            break;
        }
        if (BoolField(answer.result, "isLastCategory") && &name != &names.back()) {
            return {kRefused, {}, '"' + item.name + "\" is a song: there is nothing below it."};
        }
    }
    return answer;
}

/// Plays `item`, or the first song below it.
Answer Play(Client& client, const Settings& settings, LibraryItem item) {
    Answer answer = Select(client, item.id);
    if (answer.status == kDone && answer.result != "success") {
        answer = PlayFirst(client, item);
    }
    if (answer.status == kDone) {
        PrintPlaying(settings, item.name);
    }
    return answer;
}

Answer Browse(Client& client, const Settings& settings, const BrowseOptions& options) {
    Answer answer = Ask(client, "resetBrowseList");
    if (answer.status != kDone || options.names.empty()) {
        return answer.status != kDone ? answer : PrintOpenList(client, settings);
    }
    LibraryItem item;
    answer = WalkTo(client, options.names, item);
    if (answer.status != kDone) {
        return answer;
    }
    if (options.plays) {
        return Play(client, settings, item);
    }
    if (BoolField(answer.result, "isLastCategory")) {
        return PrintSong(settings, item, answer.result);
    }
    answer = Select(client, item.id);
    return answer.status == kDone ? PrintOpenList(client, settings) : answer;
}

}  // namespace

int RunBrowse(const Settings& settings, const BrowseOptions& options) {
    Client client = settings.MakeClient();
    if (const auto connected = client.Connect(); !connected) {
        return Complain(connected.Why());
    }
    const Answer answer = Browse(client, settings, options);
    if (answer.status != kDone) {
        Complain(answer.complaint);
    }
    return answer.status;
}

}  // namespace IpodControl
