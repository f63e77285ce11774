// Whether the service did what it was asked.
#pragma once

#include "IpodControl/Client.h"
#include "IpodControl/ctl/Method.h"

namespace IpodControl {

enum class Judgement {
    Done,
    Refused,
    NotUnderstood,  ///< the result has a shape that the service does not give
};

/// `params` is what was sent. Does not throw.
Judgement Judge(const Method& method, const Json::Value& params, const Reply& reply);

}  // namespace IpodControl
