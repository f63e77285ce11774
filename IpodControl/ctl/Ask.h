// Calls by the names of the table, judged.
#pragma once

#include <string>

#include "IpodControl/Client.h"
#include "IpodControl/ctl/Judgement.h"
#include "IpodControl/ctl/Method.h"
#include "IpodControl/ctl/Output.h"

namespace IpodControl {

struct Answer {
    ExitStatus status = kDone;
    Json::Value result;
    std::string complaint;  ///< a sentence, where the status is not kDone
};

/// What a reply means for the caller of `method`.
Answer Weigh(const Method& method, const Json::Value& params, const Reply& reply);

/// `name` is one of the table.
Answer Ask(Client& client, const char* name, const Json::Value& params = {});

}  // namespace IpodControl
