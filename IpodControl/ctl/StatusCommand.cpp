// Everything about the player in one view.

#include <algorithm>

#include "IpodControl/Fields.h"
#include "IpodControl/ctl/Ask.h"
#include "IpodControl/ctl/Commands.h"
#include "IpodControl/ctl/Output.h"
#include "IpodControl/ctl/ResultText.h"

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
    const bool isPaused = BoolField(replies[2].result, "isPaused");
    Json::Value summary;
    summary["connected"] = true;
    summary["state"] = isPaused                        ? "paused"
                       : BoolField(track, "isPlaying") ? "playing"
                       : track.isNull()                ? "unknown"
                                                       : "stopped";
    summary["track"] = track.isNull() ? Field(replies[1].result, "trackInfo") : track;
    summary["shuffle"] = BoolField(replies[3].result, "enabled");
    summary["repeat"] = TextField(replies[4].result, "mode");
    return summary;
}

/// Nothing is known of a track without a title, as before the first one is chosen.
void PrintTrack(Table& table, const Json::Value& track) {
    if (TextField(track, "trackTitle").empty()) {
        return;
    }
    const std::int64_t index = IntegerField(track, "trackIndex").value_or(0);
    const std::int64_t count = IntegerField(track, "trackCount").value_or(0);
    if (index > 0) {
        table.Add({"track", std::to_string(index) + " of " + std::to_string(count)});
    }
    table.Add({"title", TextField(track, "trackTitle")});
    table.Add({"artist", TextField(track, "trackArtist")});
    table.Add({"album", TextField(track, "trackAlbum")});
    table.Add({"position", PositionText(track)});
}

void PrintSummary(const Json::Value& summary) {
    Table table({Table::Align::Left, Table::Align::Left});
    table.Add({"player", "connected"});
    table.Add({"state", TextField(summary, "state")});
    PrintTrack(table, Field(summary, "track"));
    table.Add({"shuffle", BoolField(summary, "shuffle") ? "on" : "off"});
    table.Add({"repeat", TextField(summary, "repeat")});
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

}  // namespace

int RunStatus(const Settings& settings) {
    Client client = settings.MakeClient();
    if (const auto connected = client.Connect(); !connected) {
        return Complain(connected.Why());
    }
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
    if (!BoolField(replies->front().result, "connected")) {
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
        Summary(*replies, *notification ? Field((*notification)->Params(), "trackInfo") : Json::Value());
    if (settings.json) {
        PrintJson(summary);
    } else {
        PrintSummary(summary);
    }
    return kDone;
}

}  // namespace IpodControl
