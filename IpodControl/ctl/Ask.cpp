#include "IpodControl/ctl/Ask.h"

namespace IpodControl {

Answer Weigh(const Method& method, const Json::Value& params, const Reply& reply) {
    const std::string name(method.name);
    if (reply.error) {
        return {kRefused, reply.result,
                name + ": the service answers with error " + std::to_string(reply.error->code) + ", \"" +
                    reply.error->message + "\"."};
    }
    switch (Judge(method, params, reply)) {
        case Judgement::Done:
            return {kDone, reply.result, ""};
        case Judgement::Refused:
            return {kRefused, reply.result, name + ": " + std::string(method.no) + "."};
        case Judgement::NotUnderstood:
            break;
    }
    return {kNoService, reply.result, name + ": the answer is none that the service gives."};
}

Answer Ask(Client& client, const char* name, const Json::Value& params) {
    const auto reply = client.Call(name, params);
    if (!reply) {
        return {kNoService, {}, reply.Why().text + "."};
    }
    return Weigh(*FindMethod(name), params, *reply);
}

}  // namespace IpodControl
