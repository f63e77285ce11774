// bench_player_start: how soon the simulated player has built its database, and the peak of its memory. It
// holds 100,000 made-up tracks unless DEVICE_SIMULATOR_TRACKS says otherwise.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "DeviceManager/DeviceManager.h"
#include "bench/Memory.h"
#include "bench/Result.h"

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
        if (!player.empty()) {
            return StatusKilobytes("VmHWM:", "/proc/" + player) / 1024;
        }
    }
    return 0;
}

}  // namespace

int main() {
    setenv("DEVICE_SIMULATOR_TRACKS", "100000", 0);
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
    Bench::Report("player-start", Milliseconds() / 1000);
    Bench::Report("player-peak", PlayerPeakMegabytes());
    return 0;
}
