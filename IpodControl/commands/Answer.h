// What a reply means for whoever called a method of the table.
#pragma once

#include <string>

#include "IpodControl/Client.h"
#include "IpodControl/commands/Method.h"
#include "IpodControl/commands/Output.h"

namespace IpodControl {

struct Answer {
    ExitStatus status = kDone;  ///< kNoService: the result has a shape that the service does not give
    Json::Value result;
    std::string complaint;  ///< a sentence, where the status is not kDone
    bool isError = false;   ///< an error object, or no answer at all
};

/// `params` is what was sent. Does not throw.
Answer Weigh(const Method& method, const Json::Value& params, const Reply& reply);

/// Calls `name`, one of the table without parameters.
Answer Ask(Client& client, const char* name);

/// Complains of an answer that is not kDone, and gives back its status. Where the service refused because no
/// player is connected, that is the complaint.
int Complain(Client& client, const Answer& answer);

}  // namespace IpodControl
