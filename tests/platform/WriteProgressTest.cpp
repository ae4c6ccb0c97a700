#include "platform/WriteProgress.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

/// 9600 bits a second, 10 bits a byte: nine bytes take 9.375 ms, ten take 10.417 ms.
constexpr int32_t kAsGoodAsOut = 9;

DCB At(int32_t lBaudRate) {
    DCB dcb;
    dcb.BaudRate = lBaudRate;
    return dcb;
}

TEST(WriteProgress, IsOutWhenAllIsTakenAndTenMillisecondsAreLeft) {
    WriteProgress progress(DCB{}, 100);
    EXPECT_FALSE(progress.IsOut());
    progress.Note(100, kAsGoodAsOut + 1);
    EXPECT_FALSE(progress.IsOut());
    progress.Note(100, kAsGoodAsOut);
    EXPECT_TRUE(progress.IsOut());
    progress.Note(99, 0);
    EXPECT_FALSE(progress.IsOut()) << "one byte has found no room";
}

TEST(WriteProgress, TheLastTenMillisecondsAreThoseOfTheLine) {
    struct Case {
        int32_t lBaudRate;
        int32_t lHeld; ///< the most that is as good as out
    };
    for (const Case& one : {Case{110, 0},
                            {960, 0},
                            {1000, 1},
                            {2400, 2},
                            {10000, 10},
                            {115200, 115},
                            {2147483647, 2147483}}) {
        WriteProgress progress(At(one.lBaudRate), 3000000);
        progress.Note(3000000, one.lHeld);
        EXPECT_TRUE(progress.IsOut()) << one.lBaudRate;
        progress.Note(3000000, one.lHeld + 1);
        EXPECT_FALSE(progress.IsOut()) << one.lBaudRate;
    }
    DCB slow = At(12000); // 12 bits a byte
    slow.Parity = 2;
    slow.StopBits = 2;
    WriteProgress progress(slow, 100);
    progress.Note(100, 10);
    EXPECT_TRUE(progress.IsOut());
    progress.Note(100, 11);
    EXPECT_FALSE(progress.IsOut());
}

TEST(WriteProgress, CountsNoFurtherThanItCan) {
    WriteProgress progress(At(1), 2147483647);
    progress.Note(2147483647, 2147483647);
    EXPECT_FALSE(progress.IsOut());
    EXPECT_EQ(progress.PauseNanoseconds(), 5000000);
}

TEST(WriteProgress, LooksAgainWhenTheRestMayBeOutWithinOneToFiveMilliseconds) {
    WriteProgress progress(At(10000), 1000); // a byte a millisecond
    const auto pause = [&](int32_t lHeld) {
        progress.Note(1000, lHeld);
        return progress.PauseNanoseconds();
    };
    EXPECT_EQ(pause(0), 1000000);
    EXPECT_EQ(pause(10), 1000000);
    EXPECT_EQ(pause(11), 1000000);
    EXPECT_EQ(pause(12), 2000000);
    EXPECT_EQ(pause(14), 4000000);
    EXPECT_EQ(pause(15), 5000000);
    EXPECT_EQ(pause(16), 5000000);
    EXPECT_EQ(pause(1000), 5000000);
}

TEST(WriteProgress, WhatStillMovesCountsAsWritten) {
    WriteProgress progress(DCB{}, 1000);
    progress.Note(1000, 1000);
    progress.Note(1000, 999);
    EXPECT_FALSE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 1000);
}

TEST(WriteProgress, OnlyWhatTheDriverHasTakenCounts) {
    WriteProgress progress(DCB{}, 1000);
    progress.Note(400, 400);
    progress.Note(500, 400);
    EXPECT_FALSE(progress.IsStuck()) << "room was found, so something has left";
    EXPECT_EQ(progress.Written(), 500);
}

TEST(WriteProgress, OnAStuckLineOnlyWhatHasLeftCounts) {
    WriteProgress progress(DCB{}, 1000);
    progress.Note(1000, 1000);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 0);
    progress.Note(1000, 1000);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 0);
}

TEST(WriteProgress, WhatLeftBeforeTheFirstLookIsNoMovement) {
    // The buffer of the hardware swallows some bytes though the line stands.
    WriteProgress progress(DCB{}, 1000);
    progress.Note(1000, 984);
    progress.Note(1000, 984);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 16);
}

TEST(WriteProgress, WhatLeavesWhileItSettlesIsNoMovement) {
    // The buffer of an adapter swallows some bytes in its own time.
    WriteProgress progress(DCB{}, 1000);
    progress.Note(1000, 1000, true);
    progress.Note(1000, 744, true);
    EXPECT_TRUE(progress.IsStuck());
    progress.Note(1000, 744);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 256);
    progress.Note(1000, 743);
    EXPECT_FALSE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 1000);
}

TEST(WriteProgress, RoomThatIsFilledIsNoMovement) {
    WriteProgress progress(DCB{}, 1000);
    progress.Note(400, 400);
    progress.Note(600, 600);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 0);
}

TEST(WriteProgress, EarlierBytesThatAreStuckTooTakeNothingAway) {
    WriteProgress progress(DCB{}, 5);
    progress.Note(5, 20);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 0);
}

TEST(WriteProgress, ALineThatHoldsNothingKeepsWhatItTook) {
    WriteProgress progress(DCB{}, 1000);
    progress.Note(300, 0);
    progress.Note(300, 0);
    EXPECT_TRUE(progress.IsStuck());
    EXPECT_EQ(progress.Written(), 300);
}

} // namespace
} // namespace brennik
