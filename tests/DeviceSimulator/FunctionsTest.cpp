#include <cstdlib>
#include <functional>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

struct DeviceFunction {
    const char* name;
    std::function<u32(u32 ph, u32 dh)> call;
    u32 onStick = kNotSupportedByDevice;
};

/// Every function that takes a device handle and needs the device open, with arguments that are good.
std::vector<DeviceFunction> OpenedDeviceFunctions() {
    static u32 number[2] = {1, 1};
    static u8 byte[2];
    static BatteryState battery;
    static IpodInfo info;
    static BrowseItem item;
    static TrackMetadataRecord metadata;
    static char path[] = "db";
    return {
        {"GetiPodInfo", [](u32 p, u32 d) { return eDevMgrGetiPodInfo(p, d, &info); }},
        {"SetMaxCurrent", [](u32 p, u32 d) { return eDevMgriPodSetMaxCurrent(p, d, 1000); }},
        {"SetCharge", [](u32 p, u32 d) { return eDevMgriPodSetInternalBatteryChargeState(p, d, 1); }},
        {"GetBattery", [](u32 p, u32 d) { return eDevMgriPodGetBatteryPowerState(p, d, &battery); }},
        {"GetVolume", [](u32 p, u32 d) { return eDevmgriPodGetVolume(p, d, byte, byte + 1); }},
        {"SetVolume", [](u32 p, u32 d) { return eDevmgriPodSetVolume(p, d, 1, 2); }},
        {"StartDatabase", [](u32 p, u32 d) { return eDevMgriPodStartBuildingDatabase(p, d, path); }},
        {"OpenSession", [](u32 p, u32 d) { return eDevMgriPodOpenMdBrowseSession(p, d, 1); }},
        {"CloseSession", [](u32 p, u32 d) { return eDevMgriPodCloseMdBrowseSession(p, d); }},
        {"Reset", [](u32 p, u32 d) { return eDevMgriPodResetDatabase(p, d); }},
        {"Back", [](u32 p, u32 d) { return eDevMgriPodBrowseOneLevelBack(p, d); }},
        {"Categories", [](u32 p, u32 d) { return eDevMgriPodMdGetCategories(p, d, 512, number); }},
        {"NumItems", [](u32 p, u32 d) { return eDevMgriPodGetNumItems(p, d, -1, 0, kTrack, number); }},
        {"Items", [](u32 p, u32 d) { return eDevMgriPodGetItems(p, d, -1, 0, kTrack, 0, number, &item); }},
        {"Select", [](u32 p, u32 d) { return eDevMgriPodSelectCategorizedIndex(p, d, kTrack, 0); }},
        {"Play", [](u32 p, u32 d) { return eDevMgriPodPlay(p, d); }},
        {"Pause", [](u32 p, u32 d) { return eDevMgriPodPause(p, d); }},
        {"Stop", [](u32 p, u32 d) { return eDevMgriPodStop(p, d); }},
        {"SeekStart", [](u32 p, u32 d) { return eDevMgriPodFastForwardRewindStart(p, d, 0); }},
        {"SeekStop", [](u32 p, u32 d) { return eDevMgriPodFastForwardRewindStop(p, d); }},
        {"Skip", [](u32 p, u32 d) { return eDevMgriPodPlayNextPreviousTrack(p, d, 0); }},
        {"Status", [](u32 p, u32 d) { return eDevMgriPodGetPlayStatus(p, d, number); }},
        {"Times",
         [](u32 p, u32 d) {
             return eDevMgriPodGetPlayingTrackElapsedAndTotaltime(p, d, number, number + 1);
         }},
        {"Metadata", [](u32 p, u32 d) { return eDevMgriPodGetPlayingTrackMetaData(p, d, &metadata); }},
        {"Art",
         [](u32 p, u32 d) { return eDevMgriPodGetPlayingTrackAlbumArt(p, d, number, number + 1, 4096); }},
        {"NumPlaying", [](u32 p, u32 d) { return eDevMgriPodGetNumPlayingTracks(p, d, number, number + 1); }},
        {"PlayingList", [](u32 p, u32 d) { return eDevMgriPodGetPlayingList(p, d, 0, number, &item); }},
        {"SelectPlaying", [](u32 p, u32 d) { return eSelectNowPlayingIndex(p, d, 0); }},
        {"GetShuffle", [](u32 p, u32 d) { return eDevMgriPodGetShuffleSetting(p, d, number); }},
        {"SetShuffle", [](u32 p, u32 d) { return eDevMgriPodSetShuffleSetting(p, d, 1); }},
        {"GetRepeat", [](u32 p, u32 d) { return eDevMgriPodGetRepeatSetting(p, d, number); }},
        {"SetRepeat", [](u32 p, u32 d) { return eDevMgriPodSetRepeatSetting(p, d, 1); }},
        {"AppName",
         [](u32 p, u32 d) {
             char* name = nullptr;
             const u32 result = eDevMgriPodGetNowPlayingAppname(p, d, &name);
             std::free(name);
             return result;
         }},
        {"Close", [](u32 p, u32 d) { return eDevMgrCloseDevice(p, d); }, kSuccess},
    };
}

using FunctionsTest = SimulatorTest;

TEST_F(FunctionsTest, WrongHandlesAreToldApart) {
    const u32 player = Simulator::Instance().Plug({});
    DeviceDescription description;
    description.type = kStickFat32;
    const u32 stick = Simulator::Instance().Plug(description);
    description.type = kHub;
    const u32 hub = Simulator::Instance().Plug(description);
    ASSERT_EQ(eDevMgrOpenDevice(ph, stick), kSuccess);
    for (const DeviceFunction& function : OpenedDeviceFunctions()) {
        EXPECT_EQ(function.call(0, player), u32{kProcessNotRegistered}) << function.name;
        EXPECT_EQ(function.call(ph + 1, player), u32{kProcessNotRegistered}) << function.name;
        EXPECT_EQ(function.call(ph, 0), u32{kInvalidDeviceHandle}) << function.name;
        EXPECT_EQ(function.call(ph, 4711), u32{kInvalidDeviceHandle}) << function.name;
        EXPECT_EQ(function.call(ph, hub), u32{kInvalidDeviceHandle}) << function.name;
        EXPECT_EQ(function.call(ph, player), u32{kDeviceNotOpened}) << function.name;
        EXPECT_EQ(function.call(ph, stick), function.onStick) << function.name;
    }
}

TEST_F(FunctionsTest, BrowsingNeedsASessionAndPlayingATrack) {
    dh = Simulator::Instance().Plug({});
    ASSERT_EQ(eDevMgrOpenDevice(ph, dh), kSuccess);
    EXPECT_EQ(eDevMgrOpenDevice(ph, dh), u32{kDeviceAlreadyOpened});
    const std::map<std::string, u32> expected{
        {"CloseSession", kSessionNotOpened},
        {"Reset", kSessionNotOpened},
        {"Back", kSessionNotOpened},
        {"Categories", kSessionNotOpened},
        {"NumItems", kSessionNotOpened},
        {"Items", kSessionNotOpened},
        {"Select", kSessionNotOpened},
        {"Pause", kInStopState},
        {"SeekStart", kInStopState},
        {"Skip", kInStopState},
        {"Times", kNotPlaying},
        {"Metadata", kNotPlaying},
        {"SelectPlaying", kInvalidIndex},
        {"Art", kWrongSharedMemory},
    };
    for (const DeviceFunction& function : OpenedDeviceFunctions()) {
        const std::string name = function.name;
        if (name == "Play" || name == "Close" || name == "StartDatabase" || name == "OpenSession") {
            continue;
        }
        const auto found = expected.find(name);
        EXPECT_EQ(function.call(ph, dh), found == expected.end() ? u32{kSuccess} : found->second) << name;
    }
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), kSuccess);
    EXPECT_EQ(eDevMgriPodOpenMdBrowseSession(ph, dh, 1), u32{kSessionAlreadyOpened});
    EXPECT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    EXPECT_EQ(Title(), "Title 0");
}

TEST_F(FunctionsTest, NullPointersAndWildNumbersAreRefused) {
    OpenPlayer();
    u32 number = 0;
    u8 byte = 0;
    const u32 results[] = {
        eDevMgrRegisterProcess(nullptr, EventRecorder::Callback),
        eDevMgrRegisterProcess(&number, nullptr),
        eDevMgrAllocateSharedMemory(ph, nullptr, &number),
        eDevMgrAllocateSharedMemory(ph, &number, nullptr),
        eDevMgrGetNumDevices(ph, nullptr),
        eDevMgrGetDeviceList(ph, nullptr, 0, nullptr),
        eDevMgrGetiPodInfo(ph, dh, nullptr),
        eDevMgriPodGetBatteryPowerState(ph, dh, nullptr),
        eDevmgriPodGetVolume(ph, dh, nullptr, &byte),
        eDevmgriPodGetVolume(ph, dh, &byte, nullptr),
        eDevMgriPodGetNowPlayingAppname(ph, dh, nullptr),
        eDevMgriPodMdGetCategories(ph, dh, 512, nullptr),
        eDevMgriPodGetNumItems(ph, dh, -1, 0, kTrack, nullptr),
        eDevMgriPodGetPlayStatus(ph, dh, nullptr),
        eDevMgriPodGetPlayingTrackElapsedAndTotaltime(ph, dh, nullptr, &number),
        eDevMgriPodGetPlayingTrackMetaData(ph, dh, nullptr),
        eDevMgriPodGetNumPlayingTracks(ph, dh, nullptr, &number),
        eDevMgriPodGetPlayingList(ph, dh, 0, nullptr, nullptr),
        eDevMgriPodGetShuffleSetting(ph, dh, nullptr),
        eDevMgriPodGetRepeatSetting(ph, dh, nullptr),
        eDevMgriPodSetShuffleSetting(ph, dh, 3),
        eDevMgriPodSetRepeatSetting(ph, dh, 3),
        eDevMgriPodFastForwardRewindStart(ph, dh, 2),
        eDevMgriPodPlayNextPreviousTrack(ph, dh, 2),
    };
    for (std::size_t i = 0; i < std::size(results); ++i) {
        EXPECT_EQ(results[i], u32{kWrongParameters}) << "case " << i;
    }
    EXPECT_EQ(eDevMgriPodStartBuildingDatabase(ph, dh, nullptr), u32{kNotSupportedByDevice});
}

TEST_F(FunctionsTest, TheDeviceListFillsTheRoomThatThereIs) {
    DeviceDescription description;
    description.handle = 0xF0000001;
    description.name = "My Phone";
    EXPECT_EQ(Simulator::Instance().Plug(description), 0xF0000001U);
    EXPECT_EQ(Simulator::Instance().Plug(description), 0U);
    description = {};
    description.type = kStickFat32;
    Simulator::Instance().Plug(description);
    u32 count = 0;
    EXPECT_EQ(eDevMgrGetNumDevices(ph, &count), kSuccess);
    EXPECT_EQ(count, 2U);
    DeviceRecord list[3] = {};
    count = 1;
    EXPECT_EQ(eDevMgrGetDeviceList(ph, list, 0, &count), kSuccess);
    EXPECT_EQ(count, 1U);
    EXPECT_STREQ(list[0].name, "My Phone");
    EXPECT_EQ(list[0].handle, 0xF0000001U);
    EXPECT_EQ(list[0].type, 17U);
    EXPECT_EQ(list[1].handle, 0U);
    count = 3;
    EXPECT_EQ(eDevMgrGetDeviceList(ph, list, 0, &count), kSuccess);
    EXPECT_EQ(count, 2U);
    EXPECT_NE(std::string(list[1].mountPath), "");
}

TEST_F(FunctionsTest, SettingsAreKept) {
    OpenPlayer();
    EXPECT_EQ(eDevMgriPodSetShuffleSetting(ph, dh, 2), kSuccess);
    EXPECT_EQ(eDevMgriPodSetRepeatSetting(ph, dh, 1), kSuccess);
    EXPECT_EQ(eDevMgriPodSetRepeatSetting(ph, dh, 1), kSuccess);
    EXPECT_EQ(eDevmgriPodSetVolume(ph, dh, 1, 77), kSuccess);
    EXPECT_EQ(TakeEventText(), "32=2 33=1");
    u32 shuffle = 0;
    u32 repeat = 0;
    u8 mute = 0;
    u8 volume = 0;
    EXPECT_EQ(eDevMgriPodGetShuffleSetting(ph, dh, &shuffle), kSuccess);
    EXPECT_EQ(eDevMgriPodGetRepeatSetting(ph, dh, &repeat), kSuccess);
    EXPECT_EQ(eDevmgriPodGetVolume(ph, dh, &mute, &volume), kSuccess);
    EXPECT_EQ(std::tuple(shuffle, repeat, mute, volume), std::tuple(2U, 1U, u8{1}, u8{77}));
}

TEST_F(FunctionsTest, OnlySoManyProcessesMayRegister) {
    u32 handle = 0;
    for (std::size_t i = 1; i < ProcessRegistry::kMostProcesses; ++i) {
        EXPECT_EQ(eDevMgrRegisterProcess(&handle, EventRecorder::Callback), kSuccess);
    }
    EXPECT_EQ(eDevMgrRegisterProcess(&handle, EventRecorder::Callback), u32{kNoMoreProcesses});
    EXPECT_EQ(eDevMgrDeRegisterProcess(handle), kSuccess);
    EXPECT_EQ(eDevMgrDeRegisterProcess(handle), u32{kProcessNotRegistered});
    EXPECT_EQ(eDevMgrRegisterProcess(&handle, EventRecorder::Callback), kSuccess);
}

}  // namespace
}  // namespace DeviceSimulator::Test
