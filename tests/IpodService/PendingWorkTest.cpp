#include "IpodService/PendingWork.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(PendingWorkTest, EachRequestWakesTheLoopAndIsTakenOnce) {
    int wakes = 0;
    PendingWork pending([&] { ++wakes; });
    EXPECT_FALSE(pending.TakeClose() || pending.TakePlayStatus(7) || pending.IsAlbumArtDue() ||
                 pending.IsExitRequested() || pending.TakeTrackTime() || pending.TakeStreamRestart());
    pending.RequestClose();
    EXPECT_TRUE(pending.TakeClose());
    EXPECT_FALSE(pending.TakeClose());
    pending.RequestAlbumArt();
    pending.RequestPlayStatus();
    EXPECT_FALSE(pending.IsAlbumArtDue()) << "the track info goes first";
    EXPECT_TRUE(pending.TakePlayStatus(7));
    EXPECT_FALSE(pending.TakePlayStatus(7));
    EXPECT_TRUE(pending.IsAlbumArtDue());
    EXPECT_TRUE(pending.IsAlbumArtDue()) << "it stays until it is dropped";
    pending.DropAlbumArt();
    EXPECT_FALSE(pending.IsAlbumArtDue());
    EXPECT_TRUE(pending.RequestExit());
    EXPECT_TRUE(pending.IsExitRequested());
    EXPECT_EQ(wakes, 4);
    EXPECT_FALSE(pending.RequestExit()) << "the second one";
    pending.RequestPlayStatusAt(7);
    EXPECT_EQ(wakes, 6);
}

TEST(PendingWorkTest, ADeadlineMakesOneMoreTrackInfoDueOnceItIsPast) {
    // Far from any end of the clock, and across its sign's change.
    for (const u32 deadline : {5000u, 0x7FFFFF00u, 0xFFFFFFF0u}) {
        PendingWork pending({});
        pending.RequestPlayStatus();
        pending.RequestPlayStatusAt(deadline);
        EXPECT_TRUE(pending.TakePlayStatus(deadline - 1000)) << "asked for at once";
        EXPECT_FALSE(pending.TakePlayStatus(deadline - 1));
        EXPECT_FALSE(pending.TakePlayStatus(deadline));
        EXPECT_TRUE(pending.TakePlayStatus(deadline + 1));
        EXPECT_FALSE(pending.TakePlayStatus(deadline + 2)) << "and not for ever";

        pending.RequestPlayStatusAt(deadline);
        pending.RequestPlayStatus();
        EXPECT_TRUE(pending.TakePlayStatus(deadline + 1));
        EXPECT_FALSE(pending.TakePlayStatus(deadline + 2)) << "one for both";
    }
}

TEST(PendingWorkTest, TellsHowLongItIsUntilATrackInfoIsDue) {
    PendingWork pending({});
    EXPECT_EQ(pending.TimeToPlayStatus(7), std::nullopt);
    pending.RequestPlayStatusAt(0xFFFFFFFF);
    EXPECT_EQ(pending.TimeToPlayStatus(0xFFFFFFF0), 16u);
    EXPECT_EQ(pending.TimeToPlayStatus(0xFFFFFFFF), 1u);
    EXPECT_EQ(pending.TimeToPlayStatus(5), 0u) << "the clock has gone round";
    EXPECT_TRUE(pending.TakePlayStatus(5));
}

TEST(PendingWorkTest, AWaitEndsWithItsTimeOrWithTheRequestToExit) {
    PendingWork pending({});
    EXPECT_FALSE(pending.WaitForExit(std::chrono::milliseconds(1)));
    std::thread asking([&] { pending.RequestExit(); });
    EXPECT_TRUE(pending.WaitForExit(std::chrono::hours(1)));
    asking.join();
    EXPECT_TRUE(pending.WaitForExit(std::chrono::hours(1)));
}

}  // namespace
