// The service's process: log, command line, request server, main loop, and the way down again.

#include <gst/gst.h>
#include <malloc.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "IpodService/CommandLine.h"
#include "IpodService/IpodRequestServer.h"
#include "IpodService/MainLoop.h"
#include "IpodService/PictureLoader.h"
#include "ServiceUtil/Logger.h"
#include "ServiceUtil/SignalHandler.h"
#include "ServiceUtil/Thread.h"

namespace {

constexpr const char* kLogPath = "/home/root/ipod.log";
constexpr u16 kPort = 8883;
constexpr int kLargeBlockBytes = 1024 * 1024;
constexpr int kArenas = 2;
/// Fifty times what was seen used: the device manager's functions are called here, whatever they need.
constexpr std::size_t kServerStackBytes = std::size_t{1024} * 1024;

// Returns once a signal has ended the main loop and the server thread has finished its own stop.
void RunUntilSignal(CIpodRequestServer& server, int argc, char** argv) {
    // Without a server thread the process still runs its main loop until a signal.
    Thread serverThread;
    if (serverThread.Start(kServerStackBytes, [&server] { server.Run(); })) {
        // The port answers while the plugins are still looked up, which may take a while; also where there is
        // one core, and it goes on with this thread.
        server.WaitForFirstTry();
    }
    gst_init(&argc, &argv);
    MainLoop mainLoop;
    mainLoop.Run();
    g_print("Returned, stopping streaming\n");
    serverThread.Join();
}

}  // namespace

int main(int argc, char** argv) {
    if (const auto answer = CommandLineAnswer(argc, argv)) {
        return std::fputs(answer->c_str(), stdout) < 0 || std::fflush(stdout) != 0 ? EXIT_FAILURE
                                                                                   : EXIT_SUCCESS;
    }
    // Large blocks (the items of a long list, its answer) go back to the system when they are freed. Without
    // this the allocator keeps them after the first one.
    mallopt(M_MMAP_THRESHOLD, kLargeBlockBytes);
    // The threads allocate little beside one another: an arena each would cost address space and save no
    // time.
    mallopt(M_ARENA_MAX, kArenas);

    CLogger& logger = CLogger::Instance();
    // A file that cannot be opened leaves the log on standard output.
    logger.Open(kLogPath);
    logger.SetLevel(LogLevel::kInfo);
    const std::string address = ApplyCommandLine(argc, argv, logger);

    constexpr int kStatus = 0;
    {
        CIpodRequestServer server(InstalledPictureModule());
        CSignalHandler::Instance().Register(&server);
        server.Start(address, kPort);
        RunUntilSignal(server, argc, argv);
        CSignalHandler::Instance().Unregister(&server);
        LOG_WARN("Exiting applet status: %d\n", kStatus);
    }
    return kStatus;
}
