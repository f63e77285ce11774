#include "JsonRpc/Networking.h"

namespace networking {

bool init() {
    return true;
}

void cleanup() {}

}  // namespace networking
