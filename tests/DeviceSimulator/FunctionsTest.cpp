#include <functional>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

struct DeviceFunction {
    u32 whenOpened;  // what it answers without a browse session or anything playing
    std::function<u32(u32 ph, u32 dh)> call;
};

/// Functions that need the device open, with arguments that are good; those that change what the others
/// answer come last.
std::vector<DeviceFunction> OpenedDeviceFunctions() {
    static u32 number[2] = {1, 1};
    static BrowseItem item;
    static TrackMetadataRecord metadata;
    static char path[] = "db";
    return {
        {1, [](u32 p, u32 d) { return eDevMgriPodSetMaxCurrent(p, d, 1000); }},
        {1, [](u32 p, u32 d) { return eDevmgriPodSetVolume(p, d, 1, 2); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodStop(p, d); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodFastForwardRewindStop(p, d); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodGetPlayStatus(p, d, number); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodGetPlayingList(p, d, 0, number, &item); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodSetShuffleSetting(p, d, 1); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodGetRepeatSetting(p, d, number); }},
        {kSessionNotOpened, [](u32 p, u32 d) { return eDevMgriPodCloseMdBrowseSession(p, d); }},
        {kSessionNotOpened, [](u32 p, u32 d) { return eDevMgriPodResetDatabase(p, d); }},
        {kSessionNotOpened, [](u32 p, u32 d) { return eDevMgriPodBrowseOneLevelBack(p, d); }},
        {kSessionNotOpened, [](u32 p, u32 d) { return eDevMgriPodMdGetCategories(p, d, 512, number); }},
        {kSessionNotOpened, [](u32 p, u32 d) { return eDevMgriPodGetNumItems(p, d, -1, 0, 32, number); }},
        {kSessionNotOpened, [](u32 p, u32 d) { return eDevMgriPodSelectCategorizedIndex(p, d, 32, 0); }},
        {kInStopState, [](u32 p, u32 d) { return eDevMgriPodPause(p, d); }},
        {kInStopState, [](u32 p, u32 d) { return eDevMgriPodFastForwardRewindStart(p, d, 0); }},
        {kInStopState, [](u32 p, u32 d) { return eDevMgriPodPlayNextPreviousTrack(p, d, 0); }},
        {kNotPlaying, [](u32 p, u32 d) { return eDevMgriPodGetPlayingTrackMetaData(p, d, &metadata); }},
        {kInvalidIndex, [](u32 p, u32 d) { return eSelectNowPlayingIndex(p, d, 0); }},
        {kNotSupportedByDevice, [](u32 p, u32 d) { return eDevMgriPodStartBuildingDatabase(p, d, path); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodOpenMdBrowseSession(p, d, 1); }},
        {1, [](u32 p, u32 d) { return eDevMgriPodPlay(p, d); }},
    };
}

using FunctionsTest = SimulatorTest;

TEST_F(FunctionsTest, WrongHandlesAndStatesAreToldApart) {
    DeviceDescription description;
    description.type = kIap;
    const u32 player = Simulator::Instance().Plug(description);
    description.type = kStickFat32;
    const u32 stick = Simulator::Instance().Plug(description);
    description.type = kHub;
    const u32 hub = Simulator::Instance().Plug(description);
    ASSERT_EQ(eDevMgrOpenDevice(ph, stick), kSuccess);
    const auto functions = OpenedDeviceFunctions();
    for (std::size_t i = 0; i < functions.size(); ++i) {
        EXPECT_EQ(functions[i].call(ph + 1, player), u32{kProcessNotRegistered}) << i;
        EXPECT_EQ(functions[i].call(ph, 4711), u32{kInvalidDeviceHandle}) << i;
        EXPECT_EQ(functions[i].call(ph, hub), u32{kInvalidDeviceHandle}) << i;
        EXPECT_EQ(functions[i].call(ph, player), u32{kDeviceNotOpened}) << i;
        EXPECT_EQ(functions[i].call(ph, stick), u32{kNotSupportedByDevice}) << i;
    }
    ASSERT_EQ(eDevMgrOpenDevice(ph, player), kSuccess);
    EXPECT_EQ(eDevMgrOpenDevice(ph, player), u32{kDeviceAlreadyOpened});
    for (std::size_t i = 0; i < functions.size(); ++i) {
        EXPECT_EQ(functions[i].call(ph, player), functions[i].whenOpened) << i;
    }
}

TEST_F(FunctionsTest, TheDeviceListFillsTheRoomThatThereIs) {
    DeviceDescription description;
    description.handle = 0xF0000001;
    EXPECT_EQ(Simulator::Instance().Plug(description), 0xF0000001U);
    EXPECT_EQ(Simulator::Instance().Plug(description), 0U) << "the handle is taken";
    description = {};
    description.type = kStickFat32;
    Simulator::Instance().Plug(description);
    DeviceRecord list[3] = {};
    u32 count = 1;
    EXPECT_EQ(eDevMgrGetDeviceList(ph, list, 0, &count), kSuccess);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(list[0].handle, 0xF0000001U);
    EXPECT_EQ(list[1].handle, 0U);
    count = 3;
    EXPECT_EQ(eDevMgrGetDeviceList(ph, list, 0, &count), kSuccess);
    EXPECT_EQ(count, 2U);
}

TEST_F(FunctionsTest, NullPointersAndModesThatAreNoneAreRefused) {
    OpenPlayer();
    ASSERT_EQ(eDevMgriPodPlay(ph, dh), kSuccess);
    u32 n = 1;
    u8 byte = 9;
    const u32 results[] = {
        eDevMgrRegisterProcess(nullptr, Callback),
        eDevMgrAllocateSharedMemory(ph, nullptr, &n),
        eDevMgrAllocateSharedMemory(ph, &n, nullptr),
        eDevMgrGetNumDevices(ph, nullptr),
        eDevMgrGetDeviceList(ph, nullptr, 0, &n),
        eDevMgrGetiPodInfo(ph, dh, nullptr),
        eDevMgriPodGetBatteryPowerState(ph, dh, nullptr),
        eDevmgriPodGetVolume(ph, dh, &byte, nullptr),
        eDevMgriPodGetNowPlayingAppname(ph, dh, nullptr),
        eDevMgriPodMdGetCategories(ph, dh, kTopLevel, nullptr),
        eDevMgriPodGetNumItems(ph, dh, -1, 0, kTrack, nullptr),
        eDevMgriPodGetItems(ph, dh, -1, 0, kTrack, 0, &n, nullptr),
        eDevMgriPodGetPlayStatus(ph, dh, nullptr),
        eDevMgriPodGetPlayingTrackElapsedAndTotaltime(ph, dh, &n, nullptr),
        eDevMgriPodGetPlayingTrackMetaData(ph, dh, nullptr),
        eDevMgriPodGetNumPlayingTracks(ph, dh, &n, nullptr),
        eDevMgriPodGetPlayingList(ph, dh, 0, &n, nullptr),
        eDevMgriPodGetShuffleSetting(ph, dh, nullptr),
        eDevMgriPodGetRepeatSetting(ph, dh, nullptr),
        eDevMgriPodSetShuffleSetting(ph, dh, 3),
        eDevMgriPodSetRepeatSetting(ph, dh, 3),
        eDevMgriPodFastForwardRewindStart(ph, dh, 2),
        eDevMgriPodPlayNextPreviousTrack(ph, dh, 2),
    };
    for (std::size_t i = 0; i < std::size(results); ++i) {
        EXPECT_EQ(results[i], u32{kWrongParameters}) << i;
    }
    EXPECT_EQ(std::pair(n, byte), std::pair(1U, u8{9})) << "written on success only";
}

TEST_F(FunctionsTest, ProcessesAndDevicesAreCounted) {
    u32 handle = 0;
    for (std::size_t i = 1; i < 8; ++i) {
        handle = Register();
    }
    u32 listed = 0;
    EXPECT_EQ(eDevMgrRegisterProcess(&listed, Callback), u32{kNoMoreProcesses});
    EXPECT_EQ(eDevMgrDeRegisterProcess(handle), kSuccess);
    EXPECT_EQ(eDevMgrDeRegisterProcess(handle), u32{kProcessNotRegistered});
    Register();
    // Hubs, and what is no device yet, are told of and not listed.
    for (const u32 type : {kStickFat32, kIap, kMtp, kUnknownDevice, kHub, kNoMedium, kUnsupportedDevice}) {
        DeviceDescription device;
        device.type = type;
        Simulator::Instance().Plug(device);
    }
    EXPECT_EQ(eDevMgrGetNumDevices(ph, &listed), kSuccess);
    EXPECT_EQ(listed, 3U);
}

}  // namespace
}  // namespace DeviceSimulator::Test
