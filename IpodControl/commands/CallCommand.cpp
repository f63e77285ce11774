// One method as it is.

#include <algorithm>

#include "IpodControl/commands/Answer.h"
#include "IpodControl/commands/Commands.h"
#include "IpodControl/commands/ResultText.h"

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

}  // namespace

int RunCall(const Settings& settings, const Method& method, const Json::Value& params) {
    return settings.WithService([&](Client& client) {
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
        return answer.status == kDone || isAnswer ? static_cast<int>(answer.status)
                                                  : Complain(client, answer);
    });
}

}  // namespace IpodControl
