// Everything about the player in one view.

#include <algorithm>
#include <utility>
#include <vector>

#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"

namespace IpodControl {

namespace {

constexpr const char* kQuestions[] = {"isIpodConnected", "getCurrentTrackInfo", "isTrackPaused",
                                      "isShuffleEnabled", "getRepeatMode"};

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

void PrintSummary(const Json::Value& summary) {
    const Json::Value& track = Member(summary, "track");
    Rows rows{{"player", "connected"}, {"state", TextMember(summary, "state")}};
    const Rows trackRows = TrackRows(track);
    if (const auto index = IntegerMember(track, "trackIndex"); index > 0 && !trackRows.empty()) {
        const std::int64_t count = IntegerMember(track, "trackCount").value_or(0);
        rows.push_back({"track", std::to_string(*index) + " of " + std::to_string(count)});
    }
    rows.insert(rows.end(), trackRows.begin(), trackRows.end());
    rows.push_back({"shuffle", IsTrueMember(summary, "shuffle") ? "on" : "off"});
    rows.push_back({"repeat", TextMember(summary, "repeat")});
    PrintTable(std::move(rows));
}

}  // namespace

int RunStatus(const Settings& settings) {
    Client client(settings.endpoint, settings.Timeout());
    std::vector<Reply> replies;
    for (const char* question : kQuestions) {
        auto reply = client.Call(question, {});
        if (!reply) {
            return Complain(reply.Why());
        }
        replies.push_back(std::move(*reply));
        // A player that is not there, or that refuses, does tell what was asked.
        const Answer answer = Weigh(*FindMethod(question), {}, replies.back());
        if (answer.status == kNoService || answer.isError) {
            Complain(answer.complaint);
            return answer.status;
        }
    }
    if (!IsTrueMember(replies.front().result, "connected")) {
        if (settings.json) {
            PrintJson(Params("connected", false));
        } else {
            PrintLine("player  not connected");
        }
        return kDone;
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
        Summary(replies, *notification ? Member((*notification)->Params(), "trackInfo") : Json::Value());
    if (settings.json) {
        PrintJson(summary);
    } else {
        PrintSummary(summary);
    }
    return kDone;
}

}  // namespace IpodControl
