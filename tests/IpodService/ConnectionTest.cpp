// Registration, discovery, opening and closing.

#include <cstring>
#include <utility>

#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using ConnectionTest = ManagerTest;

TEST_F(ConnectionTest, RegistrationAndItsEndMayFailAndAreTriedAgain) {
    m_simulator.Fail("eDevMgrRegisterProcess", DEV_MGR_PROCESS_REGISTRY_FAILED, 1);
    m_simulator.Fail("eDevMgrAllocateSharedMemory", DEV_MGR_MEMORY_ERROR);
    m_manager->UpdateConnection();
    EXPECT_THAT(TakeLog(), HasSubstr("[INFO ] eDevMgrRegisterProcess\n[INFO ] Return from RegisterProcess is "
                                     ":5, DEV_MGR_PROCESS_REGISTRY_FAILED\n"));
    EXPECT_EQ(m_manager->State(), ConnectionState::Unregistered);
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    EXPECT_THAT(TakeLog(),
                HasSubstr("[WARN ] Return from eDevMgrAllocateSharedMemory is :DEV_MGR_MEMORY_ERROR\n"
                          "[DEBUG] shm1 size = 2097152, and Memory = 0\n"));

    m_simulator.Fail("eDevMgrDeRegisterProcess", DEV_MGR_PROCESS_DE_REGISTRY_FAILED, 1);
    EXPECT_EQ(m_manager->Shutdown(), 1 - DEV_MGR_PROCESS_DE_REGISTRY_FAILED);
    EXPECT_EQ(m_simulator.Calls("eDevMgrDeAllocateSharedMemory").at(0).arguments.at(1), 0);
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    const std::string log = TakeLog();
    EXPECT_THAT(log, testing::StartsWith("[INFO ] eDevMgrDeAllocateSharedMemory\n"));
    EXPECT_THAT(log, testing::EndsWith("[INFO ] Shm 2 block already gone.\n[INFO ] eDevMgrDeRegisterProcess\n"
                                       "[WARN ] Return form eDevMgrDeRegisterProcess is "
                                       "DEV_MGR_PROCESS_DE_REGISTRY_FAILED\n"));
    EXPECT_EQ(m_manager->Shutdown(), 0);
    EXPECT_EQ(m_manager->State(), ConnectionState::Unregistered);
    EXPECT_THAT(TakeLog(), testing::StartsWith("[INFO ] Shm 1 block already gone.\n"));
}

TEST_F(ConnectionTest, OneDeviceThatRefusesLeavesItsPlaceToTheNext) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    Plug(DEV_MGR_DEVICE_TYPE_IAP_2WIRE);
    const u32 second = Plug(DEV_MGR_DEVICE_TYPE_IAP_1WIRE);
    m_simulator.Fail("eDevMgrOpenDevice", DEV_MGR_NO_BROWSE_SESSION_OPENED, 1);
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::Connected);
    EXPECT_EQ(m_simulator.Calls("eDevMgriPodSetMaxCurrent").back().arguments.at(1), second);
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 1"));
}

TEST_F(ConnectionTest, AnIap2DeviceIsBrowsedOnceItsDatabaseIsBuilt) {
    m_standIns.eDevMgriPodStartBuildingDatabase = Answering(DEV_MGR_SUCCESS);
    m_standIns.eDevMgriPodOpenMdBrowseSession = Answering(DEV_MGR_SUCCESS);
    UseStandIns();
    Plug(DEV_MGR_DEVICE_TYPE_IAP2_2WIRE);
    ASSERT_TRUE(StepUntil(ConnectionState::BuildingDatabase));
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 1"));
    m_manager->UpdateConnection();
    Fire({DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO, 99});
    EXPECT_EQ(m_manager->State(), ConnectionState::BuildingDatabase);
    Fire({DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO, 0xFFFFFFFF});
    EXPECT_EQ(m_manager->State(), ConnectionState::DatabaseComplete);
    TakeLog();
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::BrowseReady);
    EXPECT_EQ(TakeLog(), "[INFO ] EIMS_DBComplete[WARN ] eDevMgriPodOpenMdBrowseSession\n");
}

TEST_F(ConnectionTest, ABuildMayFailOrEndBeforeItsCallReturns) {
    m_simulator.Fail("eDevMgriPodStartBuildingDatabase", DEV_MGR_IAP_DB_BUILDING_FAILED, 1);
    Plug(DEV_MGR_DEVICE_TYPE_IAP2_2WIRE);
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    EXPECT_TRUE(m_manager->IsDeviceConnected());
    EXPECT_THAT(m_notifications.Take(), IsEmpty());

    m_manager->CloseDevice();
    m_standIns.eDevMgriPodStartBuildingDatabase = [this](u32, u32, char*) {
        Fire({DEV_MGR_EVENT_DB_BUILD_PROGRESS_INFO, 100});
        return DEV_MGR_SUCCESS;
    };
    UseStandIns();
    EXPECT_TRUE(StepUntil(ConnectionState::DatabaseComplete));
}

TEST_F(ConnectionTest, DatabaseNamesAreExtendedOnceAndNeverOverrun) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    const std::pair<std::string, std::string> cases[] = {{"Phone", "Phone.db"},
                                                         {"Phone.db", "Phone.db"},
                                                         {"Phone.DB", "Phone.DB.db"},
                                                         {"../../etc/Phone", ".._.._etc_Phone.db"},
                                                         {std::string(254, 'n'), std::string(241, 'n')}};
    for (const auto& [name, file] : cases) {
        const u32 handle = Plug(DEV_MGR_DEVICE_TYPE_IAP2_2WIRE, name);
        m_manager->UpdateConnection();
        EXPECT_EQ(m_simulator.Calls("eDevMgriPodStartBuildingDatabase").back().text, "./root/iap2db/" + file);
        m_manager->CloseDevice();
        m_simulator.Unplug(handle);
        m_simulator.Drain();
    }
    Plug(DEV_MGR_DEVICE_TYPE_IAP2_2WIRE, "Phone");
    Plug(DEV_MGR_DEVICE_TYPE_USB_FAT_32, "Last of the list");
    m_manager->UpdateConnection();
    EXPECT_EQ(m_simulator.Calls("eDevMgriPodStartBuildingDatabase").back().text,
              "./root/iap2db/Last of the list.db");
}

TEST_F(ConnectionTest, OnlyRecordsThatTheDeviceManagerWroteAreOpened) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    constexpr u32 kMany = 0x7FFFFFFF;
    struct Case {
        u32 counted;
        u32 room;  ///< counted when the list is asked for
        u32 written;
        bool fails;
        std::size_t opened;
        bool isNamed;
    };
    const Case cases[] = {{4, 4, 2, false, 1, true},          {4, 4, 1, false, 0, true},
                          {4, 4, 0, false, 0, false},         {4, 4, 3, true, 0, false},
                          {3, 2, 0xFFFFFFFF, false, 1, true}, {3, 1, 0xFFFFFFFF, false, 0, true},
                          {kMany, 2, 2, true, 0, false},      {kMany, kMany, kMany, false, 1, true},
                          {0xFFFFFFFF, 2, 2, false, 0, false}};
    Case now;
    bool isCounted = false;
    m_standIns.eDevMgrGetNumDevices = [&](u32, u32* count) {
        *count = std::exchange(isCounted, true) ? now.room : now.counted;
        return DEV_MGR_SUCCESS;
    };
    m_standIns.eDevMgrGetDeviceList = [&](u32, DeviceRecord* list, u32, u32* count) {
        const char name[] = "a\tb\x1B[2J\x7F";
        std::memcpy(list[0].name, name, sizeof name);
        list[0].type = DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
        if (now.room > 1) {
            list[1].type = DEV_MGR_DEVICE_TYPE_IAP_2WIRE;
            list[1].handle = 21;
        }
        *count = now.written;
        return now.fails ? DEV_MGR_DEVICE_ERROR : DEV_MGR_SUCCESS;
    };
    m_standIns.eDevMgrOpenDevice = Answering(DEV_MGR_DEVICE_BUSY);
    UseStandIns();
    for (const Case& each : cases) {
        SCOPED_TRACE(std::to_string(each.counted) + ", of which " + std::to_string(each.written));
        now = each;
        isCounted = false;
        m_simulator.ClearCalls();
        TakeLog();
        m_manager->UpdateConnection();
        EXPECT_EQ(m_simulator.Calls("eDevMgrOpenDevice").size(), each.opened);
        const std::string log = TakeLog();
        EXPECT_EQ(log.find("Device Name : a?b?[2J?\tHandle : 0\n") != std::string::npos, each.isNamed);
        EXPECT_EQ(log.find("eDevMgrGetDeviceList is :DEV_MGR_DEVICE_ERROR\n") != std::string::npos,
                  each.fails);
    }
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
    EXPECT_EQ(m_manager->OpenDevice(0), 0);
    EXPECT_THAT(TakeLog(), HasSubstr("[DEBUG] ---No such device is found----\n"));
}

TEST_F(ConnectionTest, ASessionThatCannotBeOpenedIsRecoveredOnceAndThenTheDeviceIsClosed) {
    Plug(DEV_MGR_DEVICE_TYPE_IAP_1WIRE);
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    m_simulator.Fail("eDevMgriPodOpenMdBrowseSession", DEV_MGR_OPEN_MD_BROWSE_SESSION_FAILED, 1);
    m_simulator.ClearCalls();
    m_manager->UpdateConnection();
    EXPECT_THAT(TakeCalls(),
                ElementsAre("eDevMgriPodOpenMdBrowseSession(1)", "eDevMgriPodResetDatabase()",
                            "eDevMgriPodCloseMdBrowseSession()", "eDevMgriPodOpenMdBrowseSession(1)"));
    EXPECT_EQ(m_manager->State(), ConnectionState::BrowseReady);

    m_manager->CloseDevice();
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    m_simulator.Fail("eDevMgriPodOpenMdBrowseSession", DEV_MGR_OPEN_MD_BROWSE_SESSION_FAILED);
    m_notifications.Take();
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    EXPECT_FALSE(m_manager->IsDeviceConnected());
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
}

TEST_F(ConnectionTest, ALibraryThatGrantsASessionWithoutADeviceIsSearchedOn) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    m_standIns.eDevMgriPodOpenMdBrowseSession = Answering(DEV_MGR_SUCCESS);
    m_standIns.eDevMgriPodSelectCategorizedIndex = Answering(DEV_MGR_SUCCESS);
    m_standIns.eDevMgriPodPlay = Answering(DEV_MGR_SUCCESS);
    UseStandIns();
    m_manager->PlayFirstTrack();
    m_manager->GetHasPlayableData();
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    Plug(DEV_MGR_DEVICE_TYPE_IAP_2WIRE);
    EXPECT_TRUE(StepUntil(ConnectionState::BrowseReady));
    EXPECT_TRUE(m_manager->IsDeviceConnected());
}

TEST_F(ConnectionTest, ADisconnectIsActedOnInTheNextPass) {
    const u32 handle = Connect();
    // A hub, and an unknown device, whatever their words say.
    Fire({DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_HUB, handle});
    Fire({DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_UNKNOWN, handle});
    Fire({DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_IAP_2WIRE, handle + 1});
    m_manager->ProcessDelayedClose();
    EXPECT_TRUE(m_manager->IsDeviceConnected());
    Fire({DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_IAP_2WIRE, handle});
    EXPECT_TRUE(m_manager->IsDeviceConnected());
    m_manager->ProcessDelayedClose();
    m_manager->ProcessDelayedClose();
    EXPECT_FALSE(m_manager->IsDeviceConnected());
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 0"));
    // Without a device, handle 0 is the open one.
    Fire({DEV_MGR_EVENT_DEVICE_DISCONNECTED, DEV_MGR_DEVICE_TYPE_IAP_2WIRE, 0});
    m_manager->ProcessDelayedClose();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 0"));
}

TEST_F(ConnectionTest, ClosingDeletesWhatTheDeviceLeftAndNothingElse) {
    for (const char* name : {"root/a.pls", "root/B.PLS.bak", "root/keep.txt", "root/sub/c.pls",
                             "iap2db/Phone.db", "iap2db/x.DB-journal", "iap2db/keep"}) {
        std::filesystem::create_directories((m_folder / name).parent_path());
        std::ofstream(m_folder / name) << "x";
    }
    std::filesystem::create_directory(m_folder / "root/empty.pls");
    std::filesystem::create_symlink("keep.txt", m_folder / "root/link.pls");
    TakeLog();
    m_manager->CloseDevice();
    EXPECT_THAT(TakeLog(), testing::EndsWith("[DEBUG] iPod - Clearing playlist files! \n"
                                             "[DEBUG] iPod - Clearing database files! \n"));
    Texts left;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder)) {
        left.push_back(entry.path().lexically_relative(m_folder));
    }
    EXPECT_THAT(left,
                testing::UnorderedElementsAre("log", "root", "root/keep.txt", "root/sub", "root/sub/c.pls",
                                              "root/empty.pls", "root/link.pls", "iap2db", "iap2db/keep"));
}

TEST_F(ConnectionTest, ClosingLeavesBrowsingAndStopsTheStream) {
    Connect();
    ASSERT_EQ(m_manager->BrowseTopCategory(DEV_MGR_CATEGORY_ARTIST), 0);
    m_manager->StartStream();
    m_simulator.Fail("eDevMgrCloseDevice", DEV_MGR_DEVICE_ERROR, 1);
    EXPECT_EQ(m_manager->CloseDevice(), 1 - DEV_MGR_DEVICE_ERROR);
    EXPECT_FALSE(m_manager->IsBrowsing());
    EXPECT_EQ(m_manager->BrowseOneLevelBack(), 1) << "nothing is left of the stack";
    EXPECT_EQ(m_manager->StopStream(), 0);
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
}

TEST_F(ConnectionTest, AStickIsReportedOnEveryPassAndNeverTaken) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    Plug(DEV_MGR_DEVICE_TYPE_USB_FAT_32);
    m_manager->UpdateConnection();
    m_manager->UpdateConnection();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 1", "connected 1"));
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    EXPECT_FALSE(m_manager->IsDeviceConnected());
}

}  // namespace
