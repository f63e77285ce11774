#include "IpodControl/ctl/PlayerCommand.h"

#include <cstdlib>

#include "IpodControl/player/Player.h"

namespace IpodControl {

int RunPlayerCommand(const Settings& settings, bool hasColours) {
    const char* const noColour = std::getenv("NO_COLOR");
    const bool isForbidden = noColour != nullptr && *noColour != '\0';
    return RunPlayer({settings.endpoint, settings.Timeout(), hasColours && !isForbidden});
}

}  // namespace IpodControl
