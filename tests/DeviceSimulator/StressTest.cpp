#include <random>
#include <thread>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

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
            eDevMgriPodGetItems(ph, dh, kArtist, number % 5, kAlbum, number % 3, &a, items);
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
            eDevMgriPodMdGetCategories(ph, dh, 512, &a);
            break;
    }
}

/// One process's life, over and over: it registers, takes a block, calls at random and goes.
void LiveProcesses(std::uint32_t seed, const std::atomic<bool>& isOver) {
    std::minstd_rand random(seed);
    while (!isOver) {
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
        EXPECT_EQ(eDevMgrDeRegisterProcess(ph), kSuccess);
    }
}

TEST(Stress, EverythingAtOnce) {
    SimulatorOptions options;
    options.library = std::make_shared<FakeLibrary>(24);
    options.databaseBuildTime = 5ms;
    options.plugDelay = 1ms;
    options.devices.resize(1);
    Simulator& simulator = Simulator::Instance();
    simulator.Reset(options);
    std::atomic<bool> isOver{false};
    std::vector<std::thread> threads;
    for (std::uint32_t seed = 1; seed <= 3; ++seed) {
        threads.emplace_back([seed, &isOver] { LiveProcesses(seed, isOver); });
    }
    std::minstd_rand random(99);
    const auto until = std::chrono::steady_clock::now() + 2s;
    for (std::uint32_t round = 0; std::chrono::steady_clock::now() < until; ++round) {
        DeviceDescription device;
        device.type = static_cast<u32>(random() % 29);
        device.handle = 1 + round % 3;
        simulator.Unplug(*device.handle);
        simulator.Plug(device);
        device.type = kIap2;
        device.handle = 4 + round % 2;
        simulator.Plug(device);
        simulator.Unplug(5 - round % 2);
        simulator.Fail("eDevMgriPodPlay", 94, 1);
        simulator.Fire(MakeEvent({8, 1}));
        simulator.Drain();
        EXPECT_LE(simulator.Calls("eDevMgriPodPlay").size(), CallLog::kMostCalls);
    }
    isOver = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    simulator.Reset();
}

}  // namespace
}  // namespace DeviceSimulator::Test
