// Registration, discovery, opening and closing.

#include <cstring>

#include "tests/IpodService/ManagerFixture.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ConnectionTest = ManagerTest;

TEST_F(ConnectionTest, RegistrationIsTriedAgainAndTakesBlockOne) {
    m_simulator.Fail("eDevMgrRegisterProcess", 5, 2);
    m_manager->UpdateConnection();
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] eDevMgrRegisterProcess\n[INFO ] Return from RegisterProcess is :5, "
                          "DEV_MGR_PROCESS_REGISTRY_FAILED\n"));
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::Unregistered);
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    EXPECT_THAT(m_log.Take(), HasSubstr("[DEBUG] shm1 size = 2097152, and Memory = "));
    EXPECT_EQ(m_manager->AllocateShm1(), 0);
    EXPECT_THAT(m_log.Take(), HasSubstr("[DEBUG] Shm 1 block already in place.\n"));
}

TEST_F(ConnectionTest, WithoutADeviceEveryPassCountsAndSetsUpCharging) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    m_simulator.ClearCalls();
    m_manager->UpdateConnection();
    EXPECT_THAT(TakeCalls(), ElementsAre("eDevMgrGetNumDevices()", "eDevMgriPodSetMaxCurrent(1000)",
                                         "eDevMgriPodSetInternalBatteryChargeState(1)"));
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
    EXPECT_FALSE(m_manager->IsDeviceConnected());
}

TEST_F(ConnectionTest, AnIapDeviceOpensAtOnce) {
    DeviceSimulator::DeviceDescription ipod;
    ipod.type = 16;
    const u32 handle = m_simulator.Plug(ipod);
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 1"));
    EXPECT_EQ(m_simulator.Calls("eDevMgriPodSetMaxCurrent").back().arguments.at(1), handle);
    m_log.Take();
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::BrowseReady);
    EXPECT_EQ(m_log.Take(), "[INFO ] EIMS_Connected[WARN ] eDevMgriPodOpenMdBrowseSession\n");
}

TEST_F(ConnectionTest, AnIap2DeviceIsBrowsedOnceItsDatabaseIsBuilt) {
    DeviceSimulator::StandIns standIns;
    standIns.eDevMgriPodStartBuildingDatabase = [](u32, u32, char*) -> u32 { return 1; };
    standIns.eDevMgriPodOpenMdBrowseSession = [](u32, u32, u32) -> u32 { return 1; };
    m_simulator.SetStandIns(standIns);
    m_simulator.Plug({});
    ASSERT_TRUE(StepUntil(ConnectionState::BuildingDatabase));
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 1"));
    m_manager->UpdateConnection();
    Fire({37, 99});
    EXPECT_EQ(m_manager->State(), ConnectionState::BuildingDatabase);
    Fire({37, 0xFFFFFFFF});
    EXPECT_EQ(m_manager->State(), ConnectionState::DatabaseComplete);
    m_log.Take();
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::BrowseReady);
    EXPECT_EQ(m_log.Take(), "[INFO ] EIMS_DBComplete[WARN ] eDevMgriPodOpenMdBrowseSession\n");
}

TEST_F(ConnectionTest, AFailedBuildLeavesTheDeviceConnectedButUnannounced) {
    m_simulator.Fail("eDevMgriPodStartBuildingDatabase", 102);
    m_simulator.Plug({});
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    EXPECT_TRUE(m_manager->IsDeviceConnected());
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
}

TEST_F(ConnectionTest, ABuildThatEndsBeforeItsCallReturnsIsNotForgotten) {
    DeviceSimulator::StandIns standIns;
    standIns.eDevMgriPodStartBuildingDatabase = [this](u32, u32, char*) -> u32 {
        Fire({37, 100});
        return 1;
    };
    m_simulator.SetStandIns(std::move(standIns));
    DeviceSimulator::DeviceDescription phone;
    m_simulator.Plug(phone);
    EXPECT_TRUE(StepUntil(ConnectionState::DatabaseComplete));
}

TEST_F(ConnectionTest, DatabaseNamesAreExtendedOnceAndNeverOverrun) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    const struct {
        std::string name;
        std::string path;
    } cases[] = {
        {"Phone", "./root/iap2db/Phone.db"},
        {"Phone.db", "./root/iap2db/Phone.db"},
        {"Phone.DB", "./root/iap2db/Phone.DB.db"},
        {"v1.2", "./root/iap2db/v1.2.db"},
        {std::string(254, 'n'), "./root/iap2db/" + std::string(241, 'n')},
    };
    for (const auto& testCase : cases) {
        DeviceSimulator::DeviceDescription phone;
        phone.name = testCase.name;
        const u32 handle = m_simulator.Plug(phone);
        m_manager->UpdateConnection();
        const auto calls = m_simulator.Calls("eDevMgriPodStartBuildingDatabase");
        ASSERT_FALSE(calls.empty());
        EXPECT_EQ(calls.back().text, testCase.path);
        m_manager->CloseDevice();
        m_simulator.Unplug(handle);
        m_simulator.Drain();
    }
}

TEST_F(ConnectionTest, AStickIsReportedOnEveryPassAndNeverTaken) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    DeviceSimulator::DeviceDescription stick;
    stick.type = 2;
    m_simulator.Plug(stick);
    m_manager->UpdateConnection();
    m_manager->UpdateConnection();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 1", "connected 1"));
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    EXPECT_FALSE(m_manager->IsDeviceConnected());
}

TEST_F(ConnectionTest, ListsThatLieStayInsideTheirArray) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    u32 counts[] = {3, 1, 0xFFFFFFFF, 0x7FFFFFFF, 2, 0};
    std::size_t next = 0;
    u32 written = 0xFFFFFFFF;
    u32 code = 1;
    DeviceSimulator::StandIns standIns;
    standIns.eDevMgrGetNumDevices = [&](u32, u32* count) -> u32 {
        *count = counts[next++];
        return 1;
    };
    standIns.eDevMgrGetDeviceList = [&](u32, DeviceRecord* list, u32, u32* count) -> u32 {
        std::memset(list, 'x', sizeof(DeviceRecord));
        *count = written;
        return code;
    };
    m_simulator.SetStandIns(standIns);
    m_manager->UpdateConnection();  // 3, then 1
    EXPECT_THAT(TakeCalls(), Contains("eDevMgrOpenDevice()").Times(1));
    m_manager->UpdateConnection();  // negative as the state machine reads it: nothing to open
    EXPECT_THAT(TakeCalls(), Not(Contains("eDevMgrGetDeviceList(0,0)")));
    code = 10;
    m_manager
        ->UpdateConnection();  // very many, then 2, and the list fails: zero records, no reading past them
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[WARN ] Return from eDevMgrGetDeviceList is :DEV_MGR_DEVICE_ERROR\n"));
    next = 4;
    m_manager->UpdateConnection();  // 2, then gone
    EXPECT_FALSE(m_manager->IsDeviceConnected());
}

TEST_F(ConnectionTest, ASessionThatCannotBeOpenedIsRecoveredOnceAndThenTheDeviceIsClosed) {
    DeviceSimulator::DeviceDescription ipod;
    ipod.type = 15;
    m_simulator.Plug(ipod);
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    m_simulator.Fail("eDevMgriPodOpenMdBrowseSession", 46, 1);
    m_simulator.ClearCalls();
    m_manager->UpdateConnection();
    EXPECT_THAT(TakeCalls(),
                ElementsAre("eDevMgriPodOpenMdBrowseSession(1)", "eDevMgriPodResetDatabase()",
                            "eDevMgriPodCloseMdBrowseSession()", "eDevMgriPodOpenMdBrowseSession(1)"));
    EXPECT_EQ(m_manager->State(), ConnectionState::BrowseReady);

    m_manager->CloseDevice();
    ASSERT_TRUE(StepUntil(ConnectionState::Connected));
    m_simulator.Fail("eDevMgriPodOpenMdBrowseSession", 46);
    m_notifications.Take();
    m_manager->UpdateConnection();
    EXPECT_EQ(m_manager->State(), ConnectionState::Registered);
    EXPECT_FALSE(m_manager->IsDeviceConnected());
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
}

TEST_F(ConnectionTest, ADisconnectIsActedOnInTheNextPass) {
    const u32 handle = Connect();
    Fire({4, 26, handle});  // a hub, and an unknown device, whatever their words say
    Fire({4, 25, handle});
    Fire({4, 14, handle + 1});
    m_manager->ProcessDelayedClose();
    EXPECT_TRUE(m_manager->IsDeviceConnected());
    m_log.Take();
    Fire({4, 14, handle});
    EXPECT_TRUE(m_manager->IsDeviceConnected());
    m_manager->ProcessDelayedClose();
    EXPECT_FALSE(m_manager->IsDeviceConnected());
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 0"));
    EXPECT_THAT(m_log.Take(), HasSubstr("[WARN ] performing delayed close device!\n"));
    m_manager->ProcessDelayedClose();
    EXPECT_THAT(m_notifications.Take(), IsEmpty());
    // Without a device, handle 0 is the open one.
    Fire({4, 14, 0});
    m_manager->ProcessDelayedClose();
    EXPECT_THAT(m_notifications.Take(), ElementsAre("connected 0"));
}

TEST_F(ConnectionTest, ClosingDeletesWhatTheDeviceLeftAndNothingElse) {
    for (const char* name : {"root/a.pls", "root/B.PLS.bak", "root/keep.txt", "root/sub/c.pls",
                             "root/d.pls.d/x", "iap2db/Phone.db", "iap2db/x.DB-journal", "iap2db/keep"})
        m_scratch.Touch(name);
    m_manager->CloseDevice();
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(m_scratch.Path()))
        if (entry.is_regular_file() && entry.path().filename() != "log")
            left.push_back(entry.path().lexically_relative(m_scratch.Path()));
    EXPECT_THAT(left, testing::UnorderedElementsAre("root/keep.txt", "root/sub/c.pls", "root/d.pls.d/x",
                                                    "iap2db/keep"));
}

TEST_F(ConnectionTest, ShutdownGivesBackWhatIsHeldAndDeregisters) {
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    m_log.Take();
    m_simulator.Fail("eDevMgrDeRegisterProcess", 7, 1);
    EXPECT_NE(m_manager->Shutdown(), 0);
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] eDevMgrDeAllocateSharedMemory\n[INFO ] Shm 2 block already gone.\n[INFO ] "
                          "eDevMgrDeRegisterProcess\n[WARN ] Return form eDevMgrDeRegisterProcess is "
                          "DEV_MGR_PROCESS_DE_REGISTRY_FAILED\n"));
    EXPECT_EQ(m_manager->Shutdown(), 0);
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[INFO ] Shm 1 block already gone.\n[INFO ] Shm 2 block already gone.\n"));
    EXPECT_EQ(m_manager->State(), ConnectionState::Unregistered);
}

TEST_F(ConnectionTest, AFailedBlockIsKeptAndGivenBackAsItIs) {
    m_simulator.Fail("eDevMgrAllocateSharedMemory", 60);
    ASSERT_TRUE(StepUntil(ConnectionState::Registered));
    EXPECT_THAT(m_log.Take(),
                HasSubstr("[WARN ] Return from eDevMgrAllocateSharedMemory is :DEV_MGR_MEMORY_ERROR\n"
                          "[DEBUG] shm1 size = 2097152, and Memory = 0\n"));
    EXPECT_EQ(m_manager->AllocateShm1(), 0);
    m_simulator.ClearCalls();
    m_manager->FreeShm1();
    EXPECT_EQ(m_simulator.Calls("eDevMgrDeAllocateSharedMemory").at(0).arguments.at(1), 0);
}

}  // namespace
