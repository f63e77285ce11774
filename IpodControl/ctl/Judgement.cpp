#include "IpodControl/ctl/Judgement.h"

#include <string>

#include "IpodControl/Fields.h"

namespace IpodControl {

namespace {

Judgement When(bool isDone) {
    return isDone ? Judgement::Done : Judgement::Refused;
}

Judgement JudgeFlag(const Json::Value& member) {
    return member.isBool() ? When(member.asBool()) : Judgement::NotUnderstood;
}

/// The first parameter is what is read back.
Judgement JudgeReadBack(const Method& method, const Json::Value& params, const Json::Value& member) {
    if (!member.isBool() && !member.isString()) {
        return Judgement::NotUnderstood;
    }
    const Json::Value& sent = Field(params, std::string(method.parameters[0].name).c_str());
    return When(sent.isNull() || sent == member);
}

}  // namespace

Judgement Judge(const Method& method, const Json::Value& params, const Reply& reply) {
    const Json::Value& result = reply.result;
    const Json::Value& member = Field(result, std::string(method.member).c_str());
    if (reply.error) {
        return Judgement::Refused;
    }
    if (result.isNull()) {
        return When(method.verdict == Verdict::AnsweredOrNull && reply.hasResult);
    }
    switch (method.verdict) {
        case Verdict::Answered:
            return result.isObject() ? Judgement::Done : Judgement::NotUnderstood;
        case Verdict::AnsweredOrNull:
        case Verdict::Flag:
            return JudgeFlag(member);
        case Verdict::Word:
            return result.isString() ? When(result.asString() != "failure") : Judgement::NotUnderstood;
        case Verdict::NotEmpty:
            return member.isString() ? When(!member.asString().empty()) : Judgement::NotUnderstood;
        case Verdict::NotNegative:
            return member.isInt64() ? When(member.asInt64() >= 0) : Judgement::NotUnderstood;
        case Verdict::ReadBack:
            return JudgeReadBack(method, params, member);
    }
    return Judgement::NotUnderstood;
}

}  // namespace IpodControl
