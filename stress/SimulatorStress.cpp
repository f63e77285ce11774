// Tries to break the simulated player from many threads at once: processes that come, call at random and go,
// while devices are plugged in and out, scripts are set and events fly. Takes the seconds to run; fails when
// a process cannot leave or the record of calls outgrows its bound, and is meant to run under the sanitizers.
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

#include "DeviceSimulator/device/DeviceTypes.h"
#include "DeviceSimulator/embedded/Simulator.h"
#include "DeviceSimulator/music/Library.h"
#include "DeviceSimulator/run/CallLog.h"

namespace DeviceSimulator {
namespace {

using namespace std::chrono_literals;

std::atomic<bool> g_isOver{false};
std::atomic<std::uint64_t> g_lives{0};
std::atomic<std::uint64_t> g_failures{0};

void Check(bool isRight, const char* what) {
    if (!isRight) {
        ++g_failures;
        std::fprintf(stderr, "%s\n", what);
    }
}

void QuietCallback(const DeviceEvent* event, u32 ph) {
    u32 status = 0;
    eDevMgriPodGetPlayStatus(ph, event->words[5], &status);
}

/// Calls a function picked by `pick` with arguments that are near enough to good ones.
void CallAny(u32 pick, u32 ph, u32 dh, u32 block, u32 number) {
    u32 a = number;
    u32 b = number;
    u8 small[2];
    BrowseItem items[8];
    TrackMetadataRecord metadata;
    char path[] = "x";
    a = a % 8;
    switch (pick % 22) {
        case 0:
            eDevMgrOpenDevice(ph, dh);
            eDevMgriPodOpenMdBrowseSession(ph, dh, 1);
            break;
        case 1:
            eDevMgrCloseDevice(ph, dh);
            break;
        case 2:
            eDevMgriPodStartBuildingDatabase(ph, dh, path);
            break;
        case 3:
            eDevMgriPodGetItems(ph, dh, DEV_MGR_CATEGORY_ARTIST, number % 5, DEV_MGR_CATEGORY_ALBUM,
                                number % 3, &a, items);
            break;
        case 4:
            eDevMgriPodSelectCategorizedIndex(ph, dh, 1U << (number % 8), number % 9);
            break;
        case 5:
            eDevMgriPodBrowseOneLevelBack(ph, dh);
            break;
        case 6:
            eDevMgriPodResetDatabase(ph, dh);
            break;
        case 7:
            eDevMgriPodPlay(ph, dh);
            break;
        case 8:
            eDevMgriPodPause(ph, dh);
            break;
        case 9:
            eDevMgriPodPlayNextPreviousTrack(ph, dh, number % 3);
            break;
        case 10:
            eDevMgriPodFastForwardRewindStart(ph, dh, number % 3);
            break;
        case 11:
            eDevMgriPodFastForwardRewindStop(ph, dh);
            break;
        case 12:
            eDevMgriPodGetPlayingTrackMetaData(ph, dh, &metadata);
            break;
        case 13:
            eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, &a, &b, block);
            break;
        case 14:
            eDevMgriPodGetPlayingList(ph, dh, number % 9, &a, items);
            break;
        case 15:
            eSelectNowPlayingIndex(ph, dh, number % 9);
            break;
        case 16:
            eDevMgriPodSetShuffleSetting(ph, dh, number % 4);
            break;
        case 17:
            eDevMgriPodSetRepeatSetting(ph, dh, number % 4);
            break;
        case 18:
            eDevmgriPodGetVolume(ph, dh, small, small + 1);
            break;
        case 19:
            eDevMgriPodGetPlayingTrackElapsedAndTotaltime(ph, dh, &a, &b);
            break;
        case 20:
            eDevMgriPodStop(ph, dh);
            break;
        default:
            eDevMgriPodMdGetCategories(ph, dh, DEV_MGR_CATEGORY_TOP_LEVEL, &a);
            break;
    }
}

/// One process's life, over and over: it registers, takes a block, calls at random and goes.
void LiveProcesses(std::uint32_t seed) {
    std::minstd_rand random(seed);
    while (!g_isOver) {
        u32 ph = 0;
        u32 size = 4096;
        u32 block = 0;
        eDevMgrRegisterProcess(&ph, QuietCallback);
        eDevMgrAllocateSharedMemory(ph, &size, &block);
        DeviceRecord list[4];
        for (int i = 0; i < 200; ++i) {
            u32 count = 4;
            eDevMgrGetDeviceList(ph, list, 0, &count);
            const u32 dh = count > 0 ? list[random() % count].handle : 1;
            CallAny(static_cast<u32>(random()), ph, dh, block, static_cast<u32>(random()));
        }
        Check(eDevMgrDeRegisterProcess(ph) == DEV_MGR_SUCCESS, "a process could not leave");
        ++g_lives;
    }
}

void ChangeDevices(Simulator& simulator, std::minstd_rand& random, std::uint32_t round) {
    DeviceDescription device;
    device.type = static_cast<u32>(random() % DEV_MGR_DEVICE_NONE);
    device.handle = 1 + round % 3;
    simulator.Unplug(*device.handle);
    simulator.Plug(device);
    device.type = DEV_MGR_DEVICE_TYPE_IAP2_2WIRE;
    device.handle = 4 + round % 2;
    simulator.Plug(device);
    simulator.Unplug(5 - round % 2);
    simulator.Fail("eDevMgriPodPlay", DEV_MGR_IAP_APP_BUSY, 1);
    simulator.Fire(MakeEvent({DEV_MGR_EVENT_PLAY_TIME, 1}));
    simulator.Drain();
    Check(simulator.Calls("eDevMgriPodPlay").size() <= CallLog::kMostCalls, "too many calls are kept");
}

int Run(std::chrono::seconds time) {
    SimulatorOptions options;
    options.library = MakeSyntheticLibrary(24);
    options.databaseBuildTime = 5ms;
    options.plugDelay = 1ms;
    options.devices.resize(1);
    Simulator& simulator = Simulator::Instance();
    simulator.Reset(options);
    std::vector<std::thread> threads;
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
        threads.emplace_back(LiveProcesses, seed);
    }
    std::minstd_rand random(99);
    const auto until = std::chrono::steady_clock::now() + time;
    std::uint32_t rounds = 0;
    while (std::chrono::steady_clock::now() < until) {
        ChangeDevices(simulator, random, rounds++);
    }
    g_isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    simulator.Reset();
    Check(g_lives > 0 && rounds > 0, "nothing was tried");
    std::printf("%llu processes, %u rounds, %llu failures\n", static_cast<unsigned long long>(g_lives.load()),
                rounds, static_cast<unsigned long long>(g_failures.load()));
    return g_failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace DeviceSimulator

int main(int argc, char** argv) {
    const int seconds = argc == 2 ? std::atoi(argv[1]) : 0;
    if (seconds <= 0) {
        std::fprintf(stderr, "usage: %s SECONDS\n", argv[0]);
        return 2;
    }
    return DeviceSimulator::Run(std::chrono::seconds(seconds));
}
