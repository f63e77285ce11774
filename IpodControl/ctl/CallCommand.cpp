// One method as it is.

#include "IpodControl/ctl/Ask.h"
#include "IpodControl/ctl/Commands.h"
#include "IpodControl/ctl/Output.h"
#include "IpodControl/ctl/ResultText.h"

namespace IpodControl {

int RunCall(const Settings& settings, const Method& method, const Json::Value& params) {
    Client client = settings.MakeClient();
    if (const auto connected = client.Connect(); !connected) {
        return Complain(connected.Why());
    }
    const auto reply = client.Call(method.name, params);
    if (!reply) {
        return Complain(reply.Why());
    }
    const Answer answer = Weigh(method, params, *reply);
    const bool isAnswered = !reply->error && answer.status != kNoService;
    if (isAnswered && settings.json) {
        PrintJson(answer.result);
    } else if (isAnswered) {
        PrintResult(method, answer.result, answer.status == kDone);
    }
    // A question that is answered with no has not failed.
    if (answer.status != kDone && !(isAnswered && method.view == View::YesOrNo)) {
        Complain(answer.complaint);
    }
    return answer.status;
}

}  // namespace IpodControl
