#include "IpodService/PendingWork.h"

#include <gtest/gtest.h>

namespace {

auto At(u32 time) {
    return [time] { return time; };
}

TEST(PendingWorkTest, EachRequestWakesTheLoopAndTheFirstToExitIsTold) {
    int wakes = 0;
    PendingWork pending([&] { ++wakes; });
    EXPECT_FALSE(pending.TakeClose() || pending.TakePlayStatus(At(7)) || pending.IsAlbumArtDue() ||
                 pending.IsExitRequested() || pending.TakeTrackTime() || pending.TakeStreamRestart());
    pending.RequestClose();
    pending.RequestAlbumArt();
    pending.RequestPlayStatus();
    pending.RequestPlayStatusAt(7);
    EXPECT_TRUE(pending.RequestExit());
    EXPECT_TRUE(pending.IsExitRequested());
    EXPECT_EQ(wakes, 5);
    EXPECT_FALSE(pending.RequestExit());
}

TEST(PendingWorkTest, ADeadlineMakesOneMoreTrackInfoDueOnceItIsPast) {
    // Far from any end of the clock, and across its sign's change.
    for (const u32 deadline : {5000u, 0x7FFFFF00u, 0xFFFFFFF0u}) {
        PendingWork pending({});
        pending.RequestPlayStatus();
        pending.RequestPlayStatusAt(deadline);
        EXPECT_TRUE(pending.TakePlayStatus(At(deadline - 1000))) << "asked for at once";
        EXPECT_FALSE(pending.TakePlayStatus(At(deadline - 1)));
        EXPECT_FALSE(pending.TakePlayStatus(At(deadline)));
        EXPECT_TRUE(pending.TakePlayStatus(At(deadline + 1)));
        EXPECT_FALSE(pending.TakePlayStatus(At(deadline + 2))) << "and not for ever";

        pending.RequestPlayStatusAt(deadline);
        pending.RequestPlayStatus();
        EXPECT_TRUE(pending.TakePlayStatus(At(deadline + 1)));
        EXPECT_FALSE(pending.TakePlayStatus(At(deadline + 2))) << "one for both";
    }
}

TEST(PendingWorkTest, TellsHowLongItIsUntilATrackInfoIsDue) {
    PendingWork pending({});
    EXPECT_EQ(pending.TimeToPlayStatus(At(7)), std::nullopt);
    pending.RequestPlayStatusAt(0xFFFFFFFF);
    EXPECT_EQ(pending.TimeToPlayStatus(At(0xFFFFFFF0)), 16u);
    EXPECT_EQ(pending.TimeToPlayStatus(At(0xFFFFFFFF)), 1u);
    EXPECT_EQ(pending.TimeToPlayStatus(At(5)), 0u) << "the clock has gone round";
    EXPECT_TRUE(pending.TakePlayStatus(At(5)));
}

}  // namespace
