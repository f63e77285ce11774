#include "IpodService/SharedBlock.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "DeviceSimulator/embedded/Simulator.h"

namespace {

class SharedBlockTest : public testing::Test {
  protected:
    SharedBlockTest() { DeviceSimulator::Simulator::Instance().Reset(); }
    ~SharedBlockTest() override { DeviceSimulator::Simulator::Instance().SetStandIns({}); }

    /// From now on blocks are answered with `code`, a granted size and this test's own memory as the address.
    void Grant(u32 code, u32 size) {
        DeviceSimulator::StandIns standIns;
        standIns.eDevMgrAllocateSharedMemory = [=](u32, u32* granted, u32* address) {
            *granted = size;
            *address = 0x10000;
            return code;
        };
        standIns.eDevMgrDeAllocateSharedMemory = [](u32, u32) { return DEV_MGR_SUCCESS; };
        DeviceSimulator::Simulator::Instance().SetStandIns(std::move(standIns));
    }

    PendingWork m_pending{{}};
    DeviceLink m_link{m_pending};
    SharedBlock m_block{1};
};

TEST_F(SharedBlockTest, ReadsNoMoreThanWasAskedForAndGranted) {
    Grant(DEV_MGR_SUCCESS, 1000);
    EXPECT_EQ(m_block.Allocate(m_link), 0);
    EXPECT_EQ(m_block.Bytes(10).size(), 10u);
    EXPECT_EQ(m_block.Bytes(2000).size(), 1000u);
    EXPECT_EQ(m_block.Free(m_link), 0);
    EXPECT_TRUE(m_block.Bytes(10).empty());

    Grant(DEV_MGR_SUCCESS, UINT32_MAX);
    EXPECT_EQ(m_block.Allocate(m_link), 0);
    EXPECT_EQ(m_block.Bytes(UINT32_MAX).size(), 0x200000u);
}

TEST_F(SharedBlockTest, ARefusedBlockIsNoMemoryWhateverItClaims) {
    Grant(DEV_MGR_MEMORY_ERROR, 1000);
    EXPECT_NE(m_block.Allocate(m_link), 0);
    EXPECT_TRUE(m_block.IsInPlace());
    EXPECT_TRUE(m_block.Bytes(10).empty());
}

}  // namespace
