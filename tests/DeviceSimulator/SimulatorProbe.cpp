// A process like any that is linked to libdevicemanager.so: takes the first device, plays, and leaves in a
// hurry while events come in.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

#include "DeviceManager/DeviceManager.h"

namespace {

std::atomic<u32> g_connectedType{UINT32_MAX};
std::atomic<u32> g_progress{0};

void Callback(const DeviceEvent* event, u32) {
    if (event->words[0] == 3) {
        g_connectedType = event->words[1];
    } else if (event->words[0] == 37) {
        g_progress = event->words[1];
    }
}

template <typename Condition>
bool WaitFor(Condition condition) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition() && std::chrono::steady_clock::now() < until) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return condition();
}

std::string ThreadCount() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line) && line.rfind("Threads:", 0) != 0) {
    }
    return line.substr(line.find_last_of('\t') + 1);
}

void Play(u32 ph, u32 dh) {
    char path[] = "x.db";
    if (eDevMgriPodStartBuildingDatabase(ph, dh, path) == 1) {
        WaitFor([] { return g_progress == 100; });
    }
    u32 count = 0;
    u32 status = 9;
    TrackMetadataRecord record{};
    eDevMgriPodOpenMdBrowseSession(ph, dh, 1);
    eDevMgriPodGetNumItems(ph, dh, -1, 0, 32, &count);
    eDevMgriPodPlay(ph, dh);
    eDevMgriPodGetPlayStatus(ph, dh, &status);
    eDevMgriPodGetPlayingTrackMetaData(ph, dh, &record);
    std::printf("progress=%u tracks=%u status=%u titled=%d\n", g_progress.load(), count, status,
                record.title[0] != '\0');
}

}  // namespace

int main() {
    std::printf("threads=%s\n", ThreadCount().c_str());
    u32 ph = 0;
    std::printf("register=%u\n", eDevMgrRegisterProcess(&ph, Callback));
    const bool isConnected = WaitFor([] { return g_connectedType != UINT32_MAX; });
    std::printf("type=%d\n", isConnected ? static_cast<int>(g_connectedType) : -1);
    DeviceRecord record{};
    u32 count = 1;
    eDevMgrGetDeviceList(ph, &record, 0, &count);
    std::printf("listed=%u open=%u\n", count, eDevMgrOpenDevice(ph, record.handle));
    Play(ph, record.handle);
    std::fflush(stdout);
    // Threads at work in the library, while another one ends the process.
    std::thread([ph, dh = record.handle] {
        for (u32 i = 0;; ++i) {
            eDevMgriPodSetRepeatSetting(ph, dh, i % 3);
        }
    }).detach();
    std::thread([] { std::exit(1); }).join();
}
