#include <functional>

#include "SimulatorFixture.h"

namespace DeviceSimulator::Test {
namespace {

struct DeviceFunction {
    u32 whenOpened;  // what it answers without a browse session or anything playing
    std::function<u32(u32 ph, u32 dh)> call;
};

/// Functions that need the device open, of each kind that the gate knows, with arguments that are good; those
/// that change what the others answer come last.
std::vector<DeviceFunction> OpenedDeviceFunctions() {
    static u32 number[2] = {1, 1};
    static BrowseItem item;
    static char path[] = "db";
    return {
        {DEV_MGR_SUCCESS, [](u32 p, u32 d) { return eDevmgriPodSetVolume(p, d, 1, 2); }},
        {DEV_MGR_SUCCESS, [](u32 p, u32 d) { return eDevMgriPodGetPlayStatus(p, d, number); }},
        {DEV_MGR_SUCCESS, [](u32 p, u32 d) { return eDevMgriPodGetPlayingList(p, d, 0, number, &item); }},
        {DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED,
         [](u32 p, u32 d) { return eDevMgriPodCloseMdBrowseSession(p, d); }},
        {DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED, [](u32 p, u32 d) { return eDevMgriPodResetDatabase(p, d); }},
        {DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED,
         [](u32 p, u32 d) { return eDevMgriPodMdGetCategories(p, d, DEV_MGR_CATEGORY_TOP_LEVEL, number); }},
        {DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED,
         [](u32 p, u32 d) {
             return eDevMgriPodGetNumItems(p, d, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, number);
         }},
        {DEV_MGR_MD_BROWSE_SESSION_NOT_OPENED,
         [](u32 p, u32 d) { return eDevMgriPodSelectCategorizedIndex(p, d, DEV_MGR_CATEGORY_TRACK, 0); }},
        {DEV_MGR_IAP_IPOD_IN_STOP_STATE, [](u32 p, u32 d) { return eDevMgriPodPause(p, d); }},
        {DEV_MGR_IAP_INVALID_INDEX, [](u32 p, u32 d) { return eSelectNowPlayingIndex(p, d, 0); }},
        {DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE,
         [](u32 p, u32 d) { return eDevMgriPodStartBuildingDatabase(p, d, path); }},
        {DEV_MGR_SUCCESS, [](u32 p, u32 d) { return eDevMgriPodOpenMdBrowseSession(p, d, 1); }},
        {DEV_MGR_SUCCESS, [](u32 p, u32 d) { return eDevMgriPodPlay(p, d); }},
    };
}

using FunctionsTest = SimulatorTest;

TEST_F(FunctionsTest, WrongHandlesAndStatesAreToldApart) {
    DeviceDescription description;
    description.type = DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
    const u32 player = Simulator::Instance().Plug(description);
    description.type = DEV_MGR_DEVICE_TYPE_USB_FAT_32;
    const u32 stick = Simulator::Instance().Plug(description);
    description.type = DEV_MGR_DEVICE_TYPE_HUB;
    const u32 hub = Simulator::Instance().Plug(description);
    ASSERT_EQ(eDevMgrOpenDevice(ph, stick), DEV_MGR_SUCCESS);
    const auto functions = OpenedDeviceFunctions();
    for (std::size_t i = 0; i < functions.size(); ++i) {
        EXPECT_EQ(functions[i].call(ph + 1, player), u32{DEV_MGR_PROCESS_NOT_REGISTERED}) << i;
        EXPECT_EQ(functions[i].call(ph, 4711), u32{DEV_MGR_INVALID_DEVICE_HANDLE}) << i;
        EXPECT_EQ(functions[i].call(ph, hub), u32{DEV_MGR_INVALID_DEVICE_HANDLE}) << i;
        EXPECT_EQ(functions[i].call(ph, player), u32{DEV_MGR_DEVICE_NOT_OPENED}) << i;
        EXPECT_EQ(functions[i].call(ph, stick), u32{DEV_MGR_OPERATION_NOT_SUPPORTED_BY_DEVICE}) << i;
    }
    ASSERT_EQ(eDevMgrOpenDevice(ph, player), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrOpenDevice(ph, player), u32{DEV_MGR_DEVICE_ALREADY_OPENED});
    for (std::size_t i = 0; i < functions.size(); ++i) {
        EXPECT_EQ(functions[i].call(ph, player), functions[i].whenOpened) << i;
    }
}

TEST_F(FunctionsTest, NullPointersAndModesThatAreNoneAreRefused) {
    OpenPlayer();
    ASSERT_EQ(eDevMgriPodPlay(ph, dh), DEV_MGR_SUCCESS);
    u32 n = 4096;
    u32 block = 0;
    ASSERT_EQ(eDevMgrAllocateSharedMemory(ph, &n, &block), DEV_MGR_SUCCESS);
    n = 1;
    u8 byte = 9;
    const u32 results[] = {
        eDevMgrRegisterProcess(nullptr, Callback),
        eDevMgrAllocateSharedMemory(ph, nullptr, &n),
        eDevMgrAllocateSharedMemory(ph, &n, nullptr),
        eDevMgrGetDeviceList(ph, nullptr, 0, &n),
        eDevMgrGetiPodInfo(ph, dh, nullptr),
        eDevmgriPodGetVolume(ph, dh, &byte, nullptr),
        eDevMgriPodGetNowPlayingAppname(ph, dh, nullptr),
        eDevMgriPodMdGetCategories(ph, dh, DEV_MGR_CATEGORY_TOP_LEVEL, nullptr),
        eDevMgriPodGetNumItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, nullptr),
        eDevMgriPodGetItems(ph, dh, DEV_MGR_WHOLE_LIBRARY, 0, DEV_MGR_CATEGORY_TRACK, 0, &n, nullptr),
        eDevMgriPodGetNumPlayingTracks(ph, dh, &n, nullptr),
        eDevMgriPodGetPlayingTrackAlbumArt(ph, dh, nullptr, &n, block),
        eDevMgriPodGetPlayingList(ph, dh, 0, &n, nullptr),
        eDevMgriPodSetShuffleSetting(ph, dh, E_DEVMGR_IPOD_SHUFFLE_ALBUMS + 1),
        eDevMgriPodSetRepeatSetting(ph, dh, E_DEVMGR_IPOD_REPEAT_ALL + 1),
        eDevMgriPodFastForwardRewindStart(ph, dh, DEV_MGR_SEEK_REWIND + 1),
        eDevMgriPodPlayNextPreviousTrack(ph, dh, DEV_MGR_SKIP_PREVIOUS + 1),
    };
    for (std::size_t i = 0; i < std::size(results); ++i) {
        EXPECT_EQ(results[i], u32{DEV_MGR_WRONG_PARAMS}) << i;
    }
    EXPECT_EQ(std::pair(n, byte), std::pair(1U, u8{9})) << "written on success only";
}

TEST_F(FunctionsTest, ProcessesAndDevicesAreCountedAndListedAsThereIsRoom) {
    u32 handle = 0;
    for (std::size_t i = 1; i < 8; ++i) {
        handle = Register();
    }
    u32 listed = 0;
    EXPECT_EQ(eDevMgrRegisterProcess(&listed, Callback), u32{DEV_MGR_NO_MORE_PROCESS_ALLOWED});
    EXPECT_EQ(eDevMgrDeRegisterProcess(handle), DEV_MGR_SUCCESS);
    EXPECT_EQ(eDevMgrDeRegisterProcess(handle), u32{DEV_MGR_PROCESS_NOT_REGISTERED});
    Register();
    // Hubs, and what is no device yet, are told of and not listed.
    for (const u32 type :
         {DEV_MGR_DEVICE_TYPE_USB_FAT_32, DEV_MGR_DEVICE_TYPE_IAP_2WIRE, DEV_MGR_DEVICE_TYPE_MTP_2WIRE,
          DEV_MGR_DEVICE_TYPE_UNKNOWN, DEV_MGR_DEVICE_TYPE_HUB, DEV_MGR_DEVICE_TYPE_NO_MEDIUM,
          DEV_MGR_DEVICE_TYPE_UNSUPPORTED}) {
        DeviceDescription device;
        device.type = type;
        device.handle = 0xF0000000 + type;
        EXPECT_EQ(Simulator::Instance().Plug(device), device.handle);
        EXPECT_EQ(Simulator::Instance().Plug(device), 0U) << "the handle is taken";
    }
    EXPECT_EQ(eDevMgrGetNumDevices(ph, &listed), DEV_MGR_SUCCESS);
    EXPECT_EQ(listed, 3U);
    DeviceRecord list[4] = {};
    for (const u32 room : {2U, 4U}) {
        u32 count = room;
        EXPECT_EQ(eDevMgrGetDeviceList(ph, list, 0, &count), DEV_MGR_SUCCESS);
        EXPECT_EQ(count, std::min(room, listed));
        EXPECT_EQ(list[1].handle, 0xF0000000 + DEV_MGR_DEVICE_TYPE_IAP_2WIRE);
        EXPECT_EQ(list[2].handle != 0, room > 2);
    }
}

}  // namespace
}  // namespace DeviceSimulator::Test
