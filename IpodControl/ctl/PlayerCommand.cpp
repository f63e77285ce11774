#include "IpodControl/ctl/PlayerCommand.h"

#include "IpodControl/ctl/Output.h"

namespace IpodControl {

int RunPlayerCommand(const Settings& /*settings*/) {
    Complain("this build has no player view.");
    return kUsage;
}

}  // namespace IpodControl
