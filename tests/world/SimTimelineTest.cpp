#include "tests/world/SimTimeline.h"

#include <gtest/gtest.h>

#include <vector>

namespace brennik::world {
namespace {

TEST(SimTimeline, RunsEventsInTheOrderOfTheirTimes) {
    SimTimeline timeline;
    std::vector<int> order;
    timeline.At(30, [&] { order.push_back(3); });
    timeline.At(10, [&] { order.push_back(1); });
    timeline.At(20, [&] { order.push_back(2); });
    timeline.Advance(30);
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(SimTimeline, RunsEqualTimesInTheOrderOfPlanning) {
    SimTimeline timeline;
    std::vector<int> order;
    for (int nEvent = 0; nEvent < 50; ++nEvent) {
        timeline.At(10, [&order, nEvent] { order.push_back(nEvent); });
    }
    timeline.Advance(10);
    ASSERT_EQ(order.size(), 50U);
    for (int nEvent = 0; nEvent < 50; ++nEvent) {
        EXPECT_EQ(order[static_cast<size_t>(nEvent)], nEvent);
    }
}

TEST(SimTimeline, RunsAnEventAtItsMomentAndNotBefore) {
    SimTimeline timeline;
    Microseconds ranAt = -1;
    timeline.At(10, [&] { ranAt = timeline.Now(); });
    timeline.Advance(9);
    EXPECT_EQ(ranAt, -1);
    timeline.Advance(5);
    EXPECT_EQ(ranAt, 10);
    EXPECT_EQ(timeline.Now(), 14);
}

TEST(SimTimeline, RunsWhatAnEventPlansOnTheSameWay) {
    SimTimeline timeline;
    std::vector<Microseconds> moments;
    timeline.At(10, [&] {
        moments.push_back(timeline.Now());
        timeline.At(5, [&] { moments.push_back(timeline.Now()); });
        timeline.At(100, [&] { moments.push_back(timeline.Now()); });
    });
    timeline.Advance(50);
    EXPECT_EQ(moments, (std::vector<Microseconds>{10, 15}));
    EXPECT_EQ(timeline.Pending(), 1U);
}

TEST(SimTimeline, LetsAnEventMoveTimeItself) {
    SimTimeline timeline;
    std::vector<Microseconds> moments;
    timeline.At(20, [&] { moments.push_back(timeline.Now()); });
    timeline.At(10, [&] { timeline.Advance(100); });
    timeline.Advance(30);
    EXPECT_EQ(moments, (std::vector<Microseconds>{20}));
    EXPECT_EQ(timeline.Now(), 110); // time never goes back
}

TEST(SimTimeline, RunsAMomentThatIsPastAtTheNextMove) {
    SimTimeline timeline;
    timeline.Advance(100);
    bool bRan = false;
    timeline.AtMoment(5, [&] { bRan = true; });
    EXPECT_FALSE(bRan);
    timeline.Advance(0);
    EXPECT_TRUE(bRan);
    EXPECT_EQ(timeline.Now(), 100);
}

TEST(SimTimeline, StepsFromEventToEventUpToTheLimit) {
    SimTimeline timeline;
    timeline.At(10, [] {});
    timeline.At(20, [] {});
    EXPECT_TRUE(timeline.Step(15));
    EXPECT_EQ(timeline.Now(), 10);
    EXPECT_FALSE(timeline.Step(15));
    EXPECT_EQ(timeline.Now(), 15);
    EXPECT_TRUE(timeline.Step(20));
    EXPECT_EQ(timeline.Now(), 20);
}

} // namespace
} // namespace brennik::world
