#include "platform/Host.h"

#include "platform/PumpEvents.h"

#include <gtest/gtest.h>

namespace brennik {
namespace {

class StoppedClock : public Clock {
  public:
    float SecondsSinceMidnight() override { return 12.5F; }
    DateTime LocalNow() override { return DateTime{2024, 11, 5, 7, 8, 9}; }
    int32_t LocalOffsetSeconds() override { return 3600; }
    std::string MonthName(int32_t) override { return "Nov"; }
    void Sleep(int32_t lMilliseconds) override { lSlept += lMilliseconds; }

    int32_t lSlept = 0;
};

/// Asked before any test has used the host.
const bool bMadeByPumping = [] {
    PumpEvents();
    return RealHostMade();
}();

TEST(RealHost, IsNotMadeForTheSakeOfItsHook) {
    EXPECT_FALSE(bMadeByPumping);
    RealHost();
    EXPECT_TRUE(RealHostMade());
}

TEST(Host, TheRealOneIsInForceUntilAnotherStands) {
    EXPECT_EQ(&CurrentHost(), &RealHost());
}

TEST(Host, ScopedHostsNest) {
    Host first = RealHost();
    Host second = RealHost();
    {
        const ScopedHost outer(first);
        EXPECT_EQ(&CurrentHost(), &first);
        {
            const ScopedHost inner(second);
            EXPECT_EQ(&CurrentHost(), &second);
        }
        EXPECT_EQ(&CurrentHost(), &first);
    }
    EXPECT_EQ(&CurrentHost(), &RealHost());
}

TEST(Host, TheClocksOperationsUseTheCurrentHost) {
    StoppedClock clock;
    Host& real = RealHost();
    Host host{clock,          real.sockets, real.comPorts, real.files, real.profileStrings,
              real.processes, real.ostRtl};
    const ScopedHost scoped(host);
    EXPECT_EQ(SecondsSinceMidnight(), 12.5F);
    EXPECT_EQ(LocalNow(), (DateTime{2024, 11, 5, 7, 8, 9}));
    Sleep(30);
    EXPECT_EQ(clock.lSlept, 30);
}

TEST(Host, PumpEventsCallsTheHookOfTheCurrentHost) {
    Host host = RealHost();
    int nPumped = 0;
    host.pumpEvents = [&] { ++nPumped; };
    PumpEvents();
    EXPECT_EQ(nPumped, 0) << "the default hook does nothing";
    const ScopedHost scoped(host);
    PumpEvents();
    EXPECT_EQ(nPumped, 1);
}

} // namespace
} // namespace brennik
