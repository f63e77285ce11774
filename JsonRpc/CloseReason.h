// Why a client was disconnected that did not leave by itself.
#pragma once

#include <chrono>

namespace Json::Rpc {

enum class CloseReason {
    None,
    OutputNotTaken,        ///< too little of what it was owed, for too long
    TooManyNotifications,  ///< too much was owed
    RequestTooLarge,       ///< too long, or too many values
    RequestUnfinished,     ///< begun and not ended for too long
    InputTooLarge,         ///< unfinished requests of all clients together, and it had the oldest
    TableFull,             ///< its request was unfinished when its place was needed
    Http,
    OutOfMemory,
};

/// For a log: "it ..." goes on with it.
const char* ToText(CloseReason reason);

/// A client that the server has disconnected.
struct ClosedClient {
    CloseReason reason;
    std::chrono::milliseconds connected;  ///< how long it had been there
};

}  // namespace Json::Rpc
