#include "IpodService/CommandLine.h"

#include <string_view>

#include "ServiceUtil/Logger.h"

namespace {

constexpr const char* kVersion = "ipod-service " IPOD_SERVICE_VERSION "\n";
constexpr const char* kUsage =
    "Usage: ipod-service [-a ADDRESS] [-l LETTER] [--disable-logging] [--stdout]\n"
    "Lets local programs control an attached player by JSON-RPC 2.0 over TCP, port 8883.\n"
    "\n"
    "  -a ADDRESS         listens there instead of on 127.0.0.1\n"
    "  -l LETTER          logs from that level on: a all, t trace, i info (default), d debug, w warn,\n"
    "                     e error, f fatal, anything else off; i is below d\n"
    "  --disable-logging  no log\n"
    "  --stdout           logs to standard output; /home/root/ipod.log is emptied all the same\n"
    "\n"
    "Ends with status 0 after the first SIGTERM or SIGINT, with 1 after a second one. --help and\n"
    "--version answer only when they are the sole argument; other arguments are ignored.\n";

}  // namespace

std::optional<std::string> CommandLineAnswer(int argc, const char* const* argv) {
    const std::string_view argument = argc == 2 ? argv[1] : "";
    if (argument == "--version") {
        return kVersion;
    }
    if (argument == "--help") {
        return kUsage;
    }
    return std::nullopt;
}

// A switch is known by its beginning: "-abc" counts as "-a". The value of a switch is looked at again as a
// switch of its own, since the scan moves on by one argument only.
std::string ApplyCommandLine(int argc, const char* const* argv, CLogger& logger) {
    std::string address = kDefaultAddress;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const bool isLast = i + 1 == argc;
        if (argument.starts_with("-a")) {
            if (isLast) {
                break;
            }
            address = argv[i + 1];
        } else if (argument.starts_with("-l")) {
            if (isLast) {
                break;
            }
            logger.SetLevel(CLogger::LevelFromChar(argv[i + 1][0]));
        } else if (argument.starts_with("--disable-logging")) {
            logger.SetLevel(LogLevel::kOff);
        } else if (argument.starts_with("--stdout")) {
            logger.Close();
        }
    }
    return address;
}
