#include "IpodService/CommandLine.h"

#include <string_view>

#include "ServiceUtil/Logger.h"

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
