// bench_player_start: registers with the simulated player that the environment asks for, builds its database,
// and prints when the progress events came and the peaks of the player's and of this process's memory.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "DeviceManager/DeviceManager.h"
#include "bench/Memory.h"

namespace {

std::chrono::steady_clock::time_point g_began;
std::atomic<u32> g_device{0};
std::atomic<bool> g_isReady{false};

double Milliseconds() {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - g_began).count();
}

void Note(const DeviceEvent* event, u32) {
    if (event->words[0] == DEV_MGR_EVENT_DEVICE_CONNECTED) {
        g_device = event->words[2];
    } else if (event->words[0] == DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO) {
        std::printf("%5.0f ms  %3u %%\n", Milliseconds(), event->words[1]);
        g_isReady = event->words[1] == 100;
    }
}

template <typename Condition>
bool WaitUntil(Condition condition) {
    constexpr double kPatienceMs = 60000;
    while (!condition() && Milliseconds() < kPatienceMs) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
}

/// Of the player, which is this process's only child, in MB.
double PlayerPeakMegabytes() {
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string player;
        std::ifstream(task.path() / "children") >> player;
        std::ifstream status("/proc/" + player + "/status");
        for (std::string word; !player.empty() && status >> word;) {
            double kilobytes = 0;
            if (word == "VmHWM:" && status >> kilobytes) {
                return kilobytes / 1024;
            }
        }
    }
    return 0;
}

}  // namespace

int main() {
    g_began = std::chrono::steady_clock::now();
    u32 process = 0;
    char path[] = "bench.db";
    if (eDevMgrRegisterProcess(&process, Note) != DEV_MGR_SUCCESS ||
        !WaitUntil([] { return g_device != 0; }) || eDevMgrOpenDevice(process, g_device) != DEV_MGR_SUCCESS ||
        eDevMgriPodStartBuildingDatabase(process, g_device, path) != DEV_MGR_SUCCESS ||
        !WaitUntil([] { return g_isReady.load(); })) {
        std::fprintf(stderr, "no iAP2 device, or no database of it\n");
        return 1;
    }
    u32 tracks = 0;
    eDevMgriPodOpenMdBrowseSession(process, g_device, 1);
    eDevMgriPodGetNumItems(process, g_device, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, &tracks);
    std::printf("%5.0f ms  %u tracks, peaks: the player %.1f MB, this process %.1f MB\n", Milliseconds(),
                tracks, PlayerPeakMegabytes(), PeakMegabytes());
    return 0;
}
