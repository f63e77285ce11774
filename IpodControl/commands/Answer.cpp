#include "IpodControl/commands/Answer.h"

#include <optional>

namespace IpodControl {

namespace {

/// Whether it is done; none where the result has a shape that the service does not give.
std::optional<bool> JudgeResult(const Method& method, const Json::Value& params, const Json::Value& result) {
    const Json::Value& member = Member(result, method.member);
    switch (method.verdict) {
        case Verdict::Answered:
            return result.isObject() ? std::optional(true) : std::nullopt;
        case Verdict::AnsweredOrNull:
        case Verdict::Flag:
            return FlagMember(result, method.member);
        case Verdict::Word:
            return result.isString() ? std::optional(result != "failure") : std::nullopt;
        case Verdict::NotEmpty:
            return member.isString() ? std::optional(member != "") : std::nullopt;
        case Verdict::NotNegative:
            return member.isInt64() ? std::optional(member.asInt64() >= 0) : std::nullopt;
        case Verdict::ReadBack:
            break;
    }
    if (!member.isBool() && !member.isString()) {
        return std::nullopt;
    }
    // The first parameter is what is read back.
    const Json::Value& sent = Member(params, method.first.name);
    return sent.isNull() || sent == member;
}

}  // namespace

Answer Weigh(const Method& method, const Json::Value& params, const Reply& reply) {
    const std::string name(method.name);
    if (reply.error) {
        return {kRefused, reply.result,
                name + ": the service answers with error " + std::to_string(reply.error->code) + ", \"" +
                    reply.error->message + "\".",
                true};
    }
    const std::optional<bool> isDone = reply.result.isNull()
                                           ? method.verdict == Verdict::AnsweredOrNull && reply.hasResult
                                           : JudgeResult(method, params, reply.result);
    if (!isDone) {
        return {kNoService, reply.result, name + ": the answer is none that the service gives."};
    }
    return {*isDone ? kDone : kRefused, reply.result,
            *isDone ? std::string() : name + ": " + std::string(method.no) + "."};
}

Answer Ask(Client& client, const char* name) {
    const auto reply = client.Call(name);
    if (!reply) {
        return {kNoService, {}, reply.Why().text + ".", true};
    }
    return Weigh(*FindMethod(name), {}, *reply);
}

int Complain(Client& client, const Answer& answer) {
    if (answer.status == kRefused && !answer.isError) {
        const auto reply = client.Call("isIpodConnected");
        if (reply && FlagMember(reply->result, "connected") == false) {
            Complain("no player is connected.");
            return answer.status;
        }
    }
    Complain(answer.complaint);
    return answer.status;
}

}  // namespace IpodControl
