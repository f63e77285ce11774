// ipodctl: the service from a shell.

#include <exception>
#include <string>
#include <vector>

#include "IpodControl/commands/CommandLine.h"
#include "IpodControl/commands/Output.h"

int main(int argc, char** argv) {
    using namespace IpodControl;
    int status = kUsage;
    try {
        status = RunCommandLine({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        Complain(std::string("given up: ") + error.what() + ".");
        return kNoService;
    }
    return FlushOutput() || status != kDone ? status : kRefused;
}
