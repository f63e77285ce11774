// One method as it is.

#include <algorithm>

#include "IpodControl/DisplayText.h"
#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"

namespace IpodControl {

namespace {

/// Lists are circular: what is asked for beyond the end begins again. How many items are left from a start
/// within or behind the list; none where nothing is beyond it, or the start is counted from the end.
std::optional<std::int64_t> ItemsToTheEnd(const Json::Value& params, const Json::Value& list) {
    const auto start = IntegerMember(params, "startIndex");
    const auto count = IntegerMember(params, "itemCount");
    const auto total = IntegerMember(list, "totalCount");
    if (!start || !count || !total || *start < 0 || IsTrueMember(list, "isRootCategory") ||
        *start + *count <= *total) {
        return std::nullopt;
    }
    return std::max<std::int64_t>(*total - *start, 0);
}

Outcome<Reply> Call(Client& client, const Method& method, Json::Value params) {
    auto reply = client.Call(method.name, params);
    const auto left = reply ? ItemsToTheEnd(params, reply->result) : std::nullopt;
    if (!left) {
        return reply;
    }
    params["itemCount"] = Json::Int64{*left};
    return client.Call(method.name, params);
}

void PrintList(const Json::Value& result) {
    const Json::Value& items = Member(result, "categoryItems");
    PrintItems(items);
    const auto total = IntegerMember(result, "totalCount");
    if (total && !IsTrueMember(result, "isRootCategory")) {
        PrintLine("(" + std::to_string(items.size()) + " of " + std::to_string(*total) + ", from " +
                  std::to_string(IntegerMember(result, "currIndex").value_or(0)) + ")");
    }
}

/// The position in the play context and whether it plays are not in the answer, though members stand for
/// them.
void PrintTrack(const Json::Value& info) {
    const Rows rows = TrackRows(info);
    if (rows.empty()) {
        PrintLine("no current track");
    }
    PrintTable(rows);
}

/// Prints what `method` has brought; nothing where a person needs no word.
void PrintResult(const Method& method, const Json::Value& result, bool isDone) {
    const Json::Value& member = Member(result, method.member);
    if (method.display == Display::YesOrNo) {
        PrintLine(isDone ? method.yes : method.no);
    } else if (method.display == Display::Setting) {
        if (member.isBool() || member.isString()) {
            PrintLine(member.isBool() ? (member.asBool() ? "on" : "off") : Harmless(member.asString()));
        }
    } else if (!isDone) {
        return;
    } else if (method.display == Display::Number) {
        PrintLine(std::to_string(member.asInt64()));
    } else if (method.display == Display::Track) {
        PrintTrack(Member(result, "trackInfo"));
    } else if (method.display == Display::List) {
        PrintList(result);
    } else if (method.display == Display::Picture) {
        PrintLine(PictureText(PictureIn(result)));
    } else if (method.display == Display::Selection) {
        PrintLine(result == "browsing" ? "open" : "playing");
    } else if (method.display == Display::Played && result.isNull()) {
        PrintLine("plays already");
    }
}

}  // namespace

int RunCall(const Settings& settings, const Method& method, const Json::Value& params) {
    Client client(settings.endpoint, settings.Timeout());
    const auto reply = Call(client, method, params);
    if (!reply) {
        return Complain(reply.Why());
    }
    const Answer answer = Weigh(method, params, *reply);
    const bool isAnswered = !answer.isError && answer.status != kNoService;
    if (isAnswered && settings.json) {
        PrintJson(answer.result);
    } else if (isAnswered) {
        PrintResult(method, answer.result, answer.status == kDone);
    }
    // A question that is answered with no has not failed.
    const bool isAnswer = isAnswered && method.display == Display::YesOrNo;
    return answer.status == kDone || isAnswer ? static_cast<int>(answer.status) : Complain(client, answer);
}

}  // namespace IpodControl
