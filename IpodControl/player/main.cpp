// The view alone, for its developers and its tests: "ipod_player_view [--host HOST] [--port PORT]
// [--no-colours]".
#include <cstdlib>
#include <string>

#include "IpodControl/player/Player.h"

int main(int argc, char** argv) {
    IpodControl::PlayerOptions options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--host" && i + 1 < argc) {
            options.endpoint.host = argv[++i];
        } else if (argument == "--port" && i + 1 < argc) {
            options.endpoint.port = static_cast<std::uint16_t>(std::atoi(argv[++i]));
        } else if (argument == "--no-colours") {
            options.hasColours = false;
        } else {
            return 2;
        }
    }
    return IpodControl::RunPlayer(options);
}
