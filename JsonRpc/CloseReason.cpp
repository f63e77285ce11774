#include "JsonRpc/CloseReason.h"

namespace Json::Rpc {

const char* ToText(CloseReason reason) {
    switch (reason) {
        case CloseReason::None:
            break;
        case CloseReason::OutputNotTaken:
            return "took too little of what it was owed";
        case CloseReason::TooManyNotifications:
            return "left too many notifications untaken";
        case CloseReason::RequestTooLarge:
            return "sent a request that is too large";
        case CloseReason::RequestUnfinished:
            return "did not finish a request in time";
        case CloseReason::InputTooLarge:
            return "had the oldest of too many unfinished requests";
        case CloseReason::TableFull:
            return "held a place with an unfinished request when all were taken";
        case CloseReason::Http:
            return "spoke HTTP";
        case CloseReason::OutOfMemory:
            return "asked for more memory than there is";
    }
    return "left";
}

}  // namespace Json::Rpc
