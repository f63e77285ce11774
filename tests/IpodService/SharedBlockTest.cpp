#include "IpodService/SharedBlock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DeviceSimulator/embedded/Simulator.h"

namespace {

TEST(SharedBlockTest, ReadsNoMoreThanWasAskedForAndGranted) {
    DeviceSimulator::Simulator& simulator = DeviceSimulator::Simulator::Instance();
    simulator.Reset();
    u32 code = DEV_MGR_SUCCESS;
    u32 granted = 1000;
    DeviceSimulator::StandIns standIns;
    standIns.eDevMgrAllocateSharedMemory = [&](u32, u32* size, u32* address) {
        *size = granted;
        *address = 0x10000;
        return code;
    };
    standIns.eDevMgrDeAllocateSharedMemory = [](u32, u32) { return DEV_MGR_SUCCESS; };
    simulator.SetStandIns(standIns);
    PendingWork pending{{}};
    DeviceLink link{pending};
    SharedBlock block{1};
    EXPECT_EQ(block.Allocate(link), 0);
    EXPECT_EQ(block.Bytes(10).size(), 10u);
    EXPECT_EQ(block.Bytes(2000).size(), 1000u);
    EXPECT_EQ(block.Free(link), 0);
    EXPECT_TRUE(block.Bytes(10).empty());

    granted = UINT32_MAX;
    EXPECT_EQ(block.Allocate(link), 0);
    EXPECT_EQ(block.Bytes(UINT32_MAX).size(), 0x200000u);
    EXPECT_EQ(block.Free(link), 0);

    code = DEV_MGR_MEMORY_ERROR;
    EXPECT_NE(block.Allocate(link), 0);
    EXPECT_TRUE(block.IsInPlace());
    EXPECT_TRUE(block.Bytes(10).empty()) << "refused, whatever the answer claims";
    simulator.SetStandIns({});
}

}  // namespace
