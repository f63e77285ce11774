// Everything about the player in one view.

#include <algorithm>

#include "IpodControl/JsonMembers.h"
#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/Output.h"
#include "IpodControl/commands/ResultText.h"

namespace IpodControl {

namespace {

constexpr const char* kQuestions[] = {"isIpodConnected", "getCurrentTrackInfo", "isTrackPaused",
                                      "isShuffleEnabled", "getRepeatMode"};

/// The first answer that does not tell what was asked. A player that is not there, or that refuses, does
/// tell.
std::optional<Answer> FindOdd(const std::vector<Reply>& replies) {
    for (std::size_t i = 0; i < replies.size(); ++i) {
        Answer answer = Weigh(*FindMethod(kQuestions[i]), {}, replies[i]);
        if (answer.status == kNoService || replies[i].error) {
            return answer;
        }
    }
    return std::nullopt;
}

/// `track` is null where the notification stays away.
Json::Value Summary(const std::vector<Reply>& replies, const Json::Value& track) {
    const bool isPaused = IsTrueMember(replies[2].result, "isPaused");
    Json::Value summary;
    summary["connected"] = true;
    summary["state"] = isPaused                           ? "paused"
                       : IsTrueMember(track, "isPlaying") ? "playing"
                       : track.isNull()                   ? "unknown"
                                                          : "stopped";
    summary["track"] = track.isNull() ? Member(replies[1].result, "trackInfo") : track;
    summary["shuffle"] = IsTrueMember(replies[3].result, "enabled");
    summary["repeat"] = TextMember(replies[4].result, "mode");
    return summary;
}

/// Nothing is known of a track without a title, as before the first one is chosen.
void PrintTrack(Table& table, const Json::Value& track) {
    if (TextMember(track, "trackTitle").empty()) {
        return;
    }
    const std::int64_t index = IntegerMember(track, "trackIndex").value_or(0);
    const std::int64_t count = IntegerMember(track, "trackCount").value_or(0);
    if (index > 0) {
        table.Add({"track", std::to_string(index) + " of " + std::to_string(count)});
    }
    table.Add({"title", TextMember(track, "trackTitle")});
    table.Add({"artist", TextMember(track, "trackArtist")});
    table.Add({"album", TextMember(track, "trackAlbum")});
    table.Add({"position", PositionText(track)});
}

void PrintSummary(const Json::Value& summary) {
    Table table({Table::Align::Left, Table::Align::Left});
    table.Add({"player", "connected"});
    table.Add({"state", TextMember(summary, "state")});
    PrintTrack(table, Member(summary, "track"));
    table.Add({"shuffle", IsTrueMember(summary, "shuffle") ? "on" : "off"});
    table.Add({"repeat", TextMember(summary, "repeat")});
    table.Print();
}

int PrintDisconnected(bool json) {
    if (json) {
        Json::Value summary;
        summary["connected"] = false;
        PrintJson(summary);
    } else {
        PrintLine("player  not connected");
    }
    return kDone;
}

/// The first answer that does not tell what was asked is told instead.
int Show(Client& client, const Settings& settings) {
    std::vector<Request> requests;
    for (const char* question : kQuestions) {
        requests.push_back({question});
    }
    const auto replies = client.CallAll(requests);
    if (!replies) {
        return Complain(replies.Why());
    }
    if (const auto odd = FindOdd(*replies)) {
        Complain(odd->complaint);
        return odd->status;
    }
    if (!IsTrueMember(replies->front().result, "connected")) {
        return PrintDisconnected(settings.json);
    }
    // The position in the play context, and whether it plays, come in the notification that follows the
    // answer.
    constexpr std::chrono::milliseconds kMost{1000};
    const auto notification =
        client.AwaitNotification("trackInfoNotification", In(std::min(kMost, settings.Timeout())));
    if (!notification) {
        return Complain(notification.Why());
    }
    const Json::Value summary =
        Summary(*replies, *notification ? Member((*notification)->Params(), "trackInfo") : Json::Value());
    if (settings.json) {
        PrintJson(summary);
    } else {
        PrintSummary(summary);
    }
    return kDone;
}

}  // namespace

int RunStatus(const Settings& settings) {
    return settings.WithService([&](Client& client) { return Show(client, settings); });
}

}  // namespace IpodControl
